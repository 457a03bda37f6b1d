#include "tools/kelcalc/reference.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "tools/kelcalc/number_style.h"

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

/// An operand as part of a list: "a point".
std::string WithArticle(const std::string& noun) {
  const bool vowel = std::string_view("aeiou").find(noun.front()) != std::string_view::npos;
  return Joined({noun == "anything" ? "" : vowel ? "an " : "a ", noun});
}

std::string NounOf(CaType operand) {
  if (operand == AnyType) return "anything";
  if (operand == AnyVariable) return "variable";
  if (operand == AllEntries) return "all entries";
  return TypeName(operand);
}

/// "12 reals" for twelve of them in a row, else one after the other.
std::string Listed(const std::vector<CaType>& operands) {
  std::string text;
  for (std::size_t i = 0; i < operands.size();) {
    std::size_t same = i + 1;
    while (same < operands.size() && operands[same] == operands[i]) ++same;
    const std::string noun = NounOf(operands[i]);
    if (!text.empty()) text += " and ";
    if (operands[i] == AnyType && same > i + 1) {
      text += Joined({std::to_string(same - i), " values"});
    } else if (same > i + 1) {
      text += Joined({std::to_string(same - i), " ", noun, "s"});
    } else {
      text += operands.size() == 1 ? noun : WithArticle(noun);
    }
    i = same;
  }
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

const CaOperatorEntry* FindIn(const CaOperatorEntry* table, std::string_view name) {
  while (*table->name != '\0' && table->name != name) ++table;
  return *table->name == '\0' ? nullptr : table;
}

}  // namespace

std::vector<Alternative> AlternativesOf(const CaOperatorEntry& entry) {
  std::vector<Alternative> alternatives;
  if (entry.pairs != nullptr) {
    for (const CaRule& rule : entry.pairs->Rules()) {
      if (rule.gives == TypeNothing) continue;
      alternatives.push_back({{rule.beneath, rule.top}, rule.gives, false});
    }
  }
  for (const CaTopRule& form : entry.forms) {
    std::vector<CaType> operands(static_cast<std::size_t>(std::max(form.operands - 1, 0)),
                                 form.further);
    if (form.operands > 0 || form.top == AllEntries) operands.push_back(form.top);
    const bool keeps = form.make == nullptr && form.operands == 1 && form.gives == form.top;
    alternatives.push_back({operands, form.gives, keeps});
  }
  return alternatives;
}

std::string TakenText(const Alternative& alternative, const CaOperatorEntry& entry) {
  if (alternative.operands.empty()) return "nothing";
  const bool between =
      alternative.operands.size() == 2 && *entry.sign == '\0' && alternative.operands[0] != AnyType;
  if (!between) return Listed(alternative.operands);
  return Joined({NounOf(alternative.operands[0]), entry.name, NounOf(alternative.operands[1])});
}

const CaOperatorEntry* FindEntry(std::string_view name) {
  if (name.starts_with(FunctionSign)) return FindIn(CaFunctionTable, name.substr(1));
  const CaOperatorEntry* entry = FindIn(CaOperatorTable, name);
  return entry == nullptr ? FindIn(CaFunctionTable, name) : entry;
}

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
