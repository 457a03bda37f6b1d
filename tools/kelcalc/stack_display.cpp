#include "tools/kelcalc/stack_display.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "calc/interpreter.h"
#include "calc/object.h"
#include "tools/kelcalc/number_style.h"

namespace kelcalc {
namespace {

constexpr int MostEntries = 8;
constexpr std::size_t LongestShown = 200;  // bytes of a value; only texts come near

/// Keeps a text on its line and away from the terminal's own control sequences.
std::string Printable(std::string text, const std::string& lineBreak) {
  if (text.size() > LongestShown) text.replace(LongestShown, std::string::npos, "...\"");
  std::string printable;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      printable += lineBreak;
    } else {
      printable += byte < 0x20 || byte == 0x7F ? '?' : c;
    }
  }
  return printable;
}

std::string EntryText(const CaObject& entry, int digits, const std::string& lineBreak) {
  std::string value = Printable(ValueText(*entry.Value(), digits), lineBreak);
  if (entry.Kind() != KindVariable || entry.Name() == nullptr) return value;
  return value.empty() ? entry.Name() : value + "  " + entry.Name();
}

}  // namespace

void ShowStack(const CaInterpreter& interpreter, const DisplayStyle& style, std::FILE* to) {
  const char* dim = style.colour ? "\x1b[2m" : "";
  const char* plain = style.colour ? "\x1b[0m" : "";
  const int shown = std::min(interpreter.Depth(), MostEntries);
  if (shown < interpreter.Depth()) {
    std::fprintf(to, "%s     %d more%s\n", dim, interpreter.Depth() - shown, plain);
  }
  const std::string lineBreak = "\n" + std::string(16, ' ');
  for (int position = shown - 1; position >= 0; --position) {
    const CaObject& entry = *interpreter.Peek(position);
    std::fprintf(to, "%s%3d  %-10s%s %s\n", dim, position, TypeName(entry.Value()->type), plain,
                 EntryText(entry, style.digits, lineBreak).c_str());
  }
}

}  // namespace kelcalc
