#include "tools/kelcalc/reference.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "calc/explain/alternatives.h"

namespace kelcalc {
namespace {

constexpr std::size_t LineWidth = 78;

std::string Joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
  return text;
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

std::string ResultText(const Alternative& alternative) {
  if (alternative.keeps) return "unchanged";
  return alternative.gives == TypeNothing ? "" : TypeName(alternative.gives);
}

std::string GivenText(const Alternative& alternative, const CaOperatorEntry& entry) {
  const std::string taken = TakenText(alternative, entry);
  const std::string result = ResultText(alternative);
  return result.empty() ? taken : Joined({taken, " -> ", result});
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

std::string SummaryEntry(const CaOperatorEntry& entry) {
  return Joined({"  ", Padded(SpellingOf(entry), 8), entry.help.summary, "\n"});
}

std::string ListEntry(const CaOperatorEntry& entry) {
  std::vector<std::string> alternatives;
  for (const Alternative& one : AlternativesOf(entry)) {
    alternatives.push_back(GivenText(one, entry));
  }
  return Joined({SummaryEntry(entry), Wrapped(alternatives, std::string(12, ' '))});
}

std::string Explanation(const CaOperatorEntry& entry) {
  const std::vector<Alternative> alternatives = AlternativesOf(entry);
  std::size_t width = 0;
  for (const Alternative& one : alternatives) {
    width = std::max(width, TakenText(one, entry).size());
  }
  std::string text = Joined({SpellingOf(entry), "  ", entry.help.summary, "\n\n"});
  for (const Alternative& one : alternatives) {
    const std::string taken = TakenText(one, entry);
    const std::string result = ResultText(one);
    text += result.empty() ? Joined({"  ", taken, "\n"})
                           : Joined({"  ", Padded(taken, width), "  ->  ", result, "\n"});
  }
  if (entry.onShortStack == CaShortStack::Succeeds) {
    text += "\nWith too few entries it does nothing and does not fail.\n";
  }
  return Joined({text, "\nExample:  ", entry.help.example, "\n", entry.help.output});
}

/// In a code span, which no sign of the language can end.
std::string Code(const std::string& text) { return Joined({"`", text, "`"}); }

std::string MarkdownEntry(const CaOperatorEntry& entry) {
  std::vector<std::string> alternatives;
  for (const Alternative& one : AlternativesOf(entry)) {
    const std::string result = ResultText(one);
    const std::string taken = Code(TakenText(one, entry));
    alternatives.push_back(result.empty() ? taken : Joined({taken, " gives ", result}));
  }
  return Joined({"- ", Code(SpellingOf(entry)), " ", entry.help.summary, ".\n",
                 Wrapped(alternatives, "  "), "  Example: ", Code(entry.help.example), "\n"});
}

/// The entries of one table under a title, each made by `make`.
template <typename Make>
std::string Section(const CaOperatorEntry* table, std::string text, Make make) {
  for (const CaOperatorEntry* entry = table; *entry->name != '\0'; ++entry) text += make(*entry);
  return text;
}

}  // namespace

std::string ListText() {
  return Section(CaOperatorTable, "Operators:\n", ListEntry) +
         Section(CaFunctionTable, "\nFunctions:\n", ListEntry);
}

std::string SummaryText() {
  return Section(CaOperatorTable, "", SummaryEntry) + Section(CaFunctionTable, "", SummaryEntry);
}

std::string ExplanationText(std::string_view name) {
  const CaOperatorEntry* entry = FindEntry(name);
  return entry == nullptr ? "" : Explanation(*entry);
}

std::string ReferenceMarkdown() {
  return Section(CaOperatorTable, "### All Operators\n\n", MarkdownEntry) +
         Section(CaFunctionTable, "\n### All Functions\n\n", MarkdownEntry);
}

}  // namespace kelcalc
