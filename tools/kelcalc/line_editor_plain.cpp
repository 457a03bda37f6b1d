#include <cstddef>
#include <cstdio>

#ifdef _WIN32
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#include "tools/kelcalc/input.h"
#include "tools/kelcalc/interrupt.h"
#include "tools/kelcalc/line_editor.h"

namespace kelcalc {
namespace {

constexpr std::size_t BlockSize = 4096;  // a terminal never delivers more at once

bool AtTerminal() {
#ifdef _WIN32
  return _isatty(0) != 0;
#else
  return isatty(STDIN_FILENO) != 0;
#endif
}

class PlainEditor final : public LineEditor {
 public:
  bool MoreWaits() const override {
    return TerminalInputWaits() || (AtTerminal() && unread.find('\n') != std::string::npos);
  }

  LineResult ReadLine(const std::string& prompt, std::string& line) override {
    std::fputs(prompt.c_str(), stdout);
    std::fflush(stdout);
    line.clear();
    for (;;) {
      const std::size_t length = unread.find('\n') + 1;  // 0 when the line is not whole
      if (length > 0) return Deliver(length, line);
      if (!WaitForInput()) return Drop();
      char block[BlockSize];
      const std::ptrdiff_t count = ReadStandardInput(block, BlockSize);
      if (count < 0) ReportUnreadInput(StandardInputName, static_cast<int>(-count));
      if (count <= 0) return DeliverLast(line);
      unread.append(block, static_cast<std::size_t>(count));
    }
  }

 private:
  LineResult Deliver(std::size_t length, std::string& line) {
    line.assign(unread, 0, length);
    unread.erase(0, length);
    return LineResult::Read;
  }

  LineResult DeliverLast(std::string& line) {
    if (unread.empty()) {
      std::putc('\n', stdout);  // the prompt stands there still
      return LineResult::Ended;
    }
    unread += '\n';
    return Deliver(unread.size(), line);
  }

  LineResult Drop() {
    unread.clear();
    std::putc('\n', stdout);  // the terminal has shown ^C
    return LineResult::Interrupted;
  }

  std::string unread;
};

}  // namespace

bool TerminalInputWaits() {
#ifdef _WIN32
  return false;
#else
  constexpr int Patience = 10;  // milliseconds; a long paste comes in pieces
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  return AtTerminal() && poll(&input, 1, Patience) > 0 && (input.revents & POLLIN) != 0;
#endif
}

std::unique_ptr<LineEditor> OpenPlainEditor() { return std::make_unique<PlainEditor>(); }

}  // namespace kelcalc
