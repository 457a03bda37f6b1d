#include "calc/explain/alternatives.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>

namespace kelcalc {
namespace {

std::string Joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) text += part;
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

const CaOperatorEntry* FindIn(const CaOperatorEntry* table, std::string_view name) {
  while (*table->name != '\0' && table->name != name) ++table;
  return *table->name == '\0' ? nullptr : table;
}

}  // namespace

const char* TypeName(int type) {
  constexpr const char* Names[] = {"nothing", "integer", "string",     "real",     "vector",
                                   "point",   "matrix",  "quaternion", "rotation", "scale"};
  return type >= TypeNothing && type <= TypeScale ? Names[type] : Names[TypeNothing];
}

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

}  // namespace kelcalc
