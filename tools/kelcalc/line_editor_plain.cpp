#include <cerrno>
#include <cstdio>

#include "tools/kelcalc/line_editor.h"

namespace kelcalc {
namespace {

class PlainEditor final : public LineEditor {
 public:
  LineResult ReadLine(const std::string& prompt, std::string& line) override {
    std::fputs(prompt.c_str(), stdout);
    std::fflush(stdout);
    line.clear();
    for (;;) {
      errno = 0;
      const int c = std::getc(stdin);
      if (c == EOF) return AtEnd(line);
      line += static_cast<char>(c);
      if (c == '\n') return LineResult::Read;
    }
  }

 private:
  /// A read that a signal broke off drops the line; a line without a newline still counts.
  static LineResult AtEnd(std::string& line) {
    const bool interrupted = std::ferror(stdin) != 0 && errno == EINTR;
    std::clearerr(stdin);
    if (interrupted) {
      std::putc('\n', stdout);  // the terminal has shown ^C
      return LineResult::Interrupted;
    }
    if (line.empty()) return LineResult::Ended;
    line += '\n';
    return LineResult::Read;
  }
};

}  // namespace

std::unique_ptr<LineEditor> OpenPlainEditor() { return std::make_unique<PlainEditor>(); }

}  // namespace kelcalc
