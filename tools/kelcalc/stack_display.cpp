#include "tools/kelcalc/stack_display.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#ifndef _WIN32
#include <sys/ioctl.h>
#endif

#include "calc/explain/alternatives.h"
#include "calc/interpreter.h"
#include "calc/object.h"
#include "tools/kelcalc/number_style.h"

namespace kelcalc {
namespace {

constexpr int MostEntries = 8;
constexpr std::size_t LongestShown = 200;  // bytes of a value; only texts come near
constexpr std::size_t Unlimited = std::numeric_limits<std::size_t>::max();
constexpr std::size_t NarrowestCut = 30;  // columns; in fewer nothing could be told

/// The columns of the terminal that `to` writes to.
std::size_t WidthOf([[maybe_unused]] std::FILE* to) {
#ifndef _WIN32
  winsize size = {};
  if (ioctl(fileno(to), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return std::max<std::size_t>(size.ws_col, NarrowestCut);
  }
#endif
  return Unlimited;
}

bool ContinuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// `line` with at most `width` characters of UTF-8.
std::string Cut(const std::string& line, std::size_t width) {
  std::size_t characters = 0;
  std::size_t cutAt = 0;  // where the dots would stand
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (ContinuesCharacter(line[at])) continue;
    if (characters + 3 == width) cutAt = at;
    if (characters++ == width) return line.substr(0, cutAt) + "...";
  }
  return line;
}

/// The lines of a text, without what a terminal would obey.
std::vector<std::string> PrintableLines(std::string text) {
  if (text.size() > LongestShown) text.replace(LongestShown, std::string::npos, "...\"");
  std::vector<std::string> lines(1);
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += byte < 0x20 || byte == 0x7F ? '?' : c;
    }
  }
  return lines;
}

/// Writes values in lines: what each is called, its type, and itself.
class Table {
 public:
  Table(const DisplayStyle& style, std::FILE* to, std::size_t callWidth)
      : style_(style), to_(to), width_(WidthOf(to)), callWidth_(callWidth) {}

  void Row(std::string called, const CaValue& value, const std::string& behind) const {
    called.insert(0, callWidth_ - std::min(callWidth_, called.size()), ' ');
    std::string type = TypeName(value.type);
    type.resize(std::max<std::size_t>(type.size(), 10), ' ');
    std::string head = called + "  " + type;
    std::vector<std::string> lines = PrintableLines(ValueText(value, style_.digits));
    if (!behind.empty()) lines.back() += (lines.back().empty() ? "" : "  ") + behind;
    for (const std::string& line : lines) {
      const std::size_t room = width_ - std::min(width_ - 1, head.size() + 1);
      std::fprintf(to_, "%s%s%s %s\n", Dim(), head.c_str(), Plain(), Cut(line, room).c_str());
      head.assign(head.size(), ' ');
    }
  }

  void Remark(const std::string& text) const {
    std::fprintf(to_, "%s%s%s\n", Dim(), text.c_str(), Plain());
  }

 private:
  const char* Dim() const { return style_.colour ? "\x1b[2m" : ""; }
  const char* Plain() const { return style_.colour ? "\x1b[0m" : ""; }

  const DisplayStyle& style_;
  std::FILE* to_;
  std::size_t width_;
  std::size_t callWidth_;
};

}  // namespace

void ShowStack(const CaInterpreter& interpreter, const DisplayStyle& style, std::FILE* to) {
  const Table table(style, to, 3);
  const int shown = std::min(interpreter.Depth(), MostEntries);
  if (shown < interpreter.Depth()) {
    table.Remark("     " + std::to_string(interpreter.Depth() - shown) + " more");
  }
  for (int position = shown - 1; position >= 0; --position) {
    const CaObject& entry = *interpreter.Peek(position);
    const bool named = entry.Kind() == KindVariable && entry.Name() != nullptr;
    table.Row(std::to_string(position), *entry.Value(), named ? entry.Name() : "");
  }
}

void ShowVariables(const CaInterpreter& interpreter, const DisplayStyle& style, std::FILE* to) {
  const CaListNode* first = interpreter.variables.tail;
  std::size_t longest = 3;
  for (const CaListNode* node = first; node != nullptr; node = node->previous) {
    longest = std::max(longest, std::strlen(node->payload->Name()));
  }
  const Table table(style, to, std::min<std::size_t>(longest, 16));
  for (const CaListNode* node = first; node != nullptr; node = node->previous) {
    table.Row(node->payload->Name(), *node->payload->Value(), "");
  }
}

}  // namespace kelcalc
