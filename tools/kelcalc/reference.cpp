#include "tools/kelcalc/reference.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "calc/help.h"
#include "tools/kelcalc/operand_types.h"

namespace kelcalc {
namespace {

constexpr std::size_t LineWidth = 78;

bool IsFunction(const CaHelpEntry& entry) { return entry.name[0] == ';'; }

std::string Joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
  return text;
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

std::string GivenText(const Combination& combination, const std::string& name) {
  std::string taken = CombinationText(combination, name);
  if (combination.result.empty()) return taken;
  return Joined({taken, " -> ", combination.result});
}

/// `parts` one after the other, in lines that begin with `indent`.
std::string Wrapped(const std::vector<std::string>& parts, const std::string& indent) {
  std::string text;
  std::size_t column = LineWidth;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::string part = parts[i] + (i + 1 < parts.size() ? "," : "");
    if (column + 1 + part.size() > LineWidth) {
      if (!text.empty()) text += '\n';
      text += indent;
      text += part;
      column = indent.size() + part.size();
    } else {
      text += ' ';
      text += part;
      column += 1 + part.size();
    }
  }
  return text + '\n';
}

std::string ListEntry(const CaHelpEntry& entry) {
  std::vector<std::string> combinations;
  for (const Combination& combination : TypesOf(entry).combinations) {
    combinations.push_back(GivenText(combination, entry.name));
  }
  return Joined({"  ", Padded(entry.name, 8), entry.summary, "\n",
                 Wrapped(combinations, std::string(12, ' '))});
}

std::string Explanation(const CaHelpEntry& entry) {
  const OperandTypes types = TypesOf(entry);
  std::size_t width = 0;
  for (const Combination& combination : types.combinations) {
    width = std::max(width, CombinationText(combination, entry.name).size());
  }
  std::string text = Joined({entry.name, "  ", entry.summary, "\n\n"});
  for (const Combination& combination : types.combinations) {
    const std::string taken = CombinationText(combination, entry.name);
    text += combination.result.empty()
                ? Joined({"  ", taken, "\n"})
                : Joined({"  ", Padded(taken, width), "  ->  ", combination.result, "\n"});
  }
  return Joined({text, "\nExample:  ", entry.example, "\n", entry.output});
}

/// In a code span, which no sign of the language can end.
std::string Code(const std::string& text) { return Joined({"`", text, "`"}); }

std::string MarkdownEntry(const CaHelpEntry& entry) {
  std::vector<std::string> combinations;
  for (const Combination& combination : TypesOf(entry).combinations) {
    const std::string taken = CombinationText(combination, entry.name);
    std::string given = Code(taken);
    if (!combination.result.empty()) given = Joined({given, " gives ", combination.result});
    combinations.push_back(given);
  }
  return Joined({"- ", Code(entry.name), " ", entry.summary, ".\n", Wrapped(combinations, "  "),
                 "  Example: ", Code(entry.example), "\n"});
}

/// The operators, then the functions, each under `heading` and made by `make`.
template <typename Make>
std::string Sections(const char* heading, const char* afterHeading, Make make) {
  std::string text;
  const CaHelpEntry* entry = CaHelpTable;
  for (const char* title : {"Operators", "Functions"}) {
    const bool functions = title[0] == 'F';
    text += Joined({text.empty() ? "" : "\n", heading, title, afterHeading});
    for (; *entry->name != '\0' && IsFunction(*entry) == functions; ++entry) text += make(*entry);
  }
  return text;
}

}  // namespace

std::string ListText() { return Sections("", ":\n", ListEntry); }

std::string ExplanationText(std::string_view name) {
  const CaHelpEntry* entry = FindHelp(name);
  return entry == nullptr ? "" : Explanation(*entry);
}

std::string ReferenceMarkdown() { return Sections("### All ", "\n\n", MarkdownEntry); }

}  // namespace kelcalc
