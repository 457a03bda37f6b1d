#include "tools/kelcalc/operand_types.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

#include "calc/dispatch.h"
#include "calc/help.h"
#include "calc/interpreter.h"
#include "calc/object.h"
#include "tools/kelcalc/number_style.h"

namespace kelcalc {
namespace {

/// A value of `type` that every rule can work with: nothing in it is zero.
CaValue Sample(CaType type) {
  CaValue sample;
  sample.type = type;
  sample.integer = 1;
  sample.real = 1.0;
  sample.vector = sample.point = sample.scale = CyVector(1.0, 1.0, 1.0);
  sample.rotation = CyRotation(CyVector(0.0, 0.0, 1.0), 90.0);
  return sample;
}

std::string ResultOf(const CaRule& rule) {
  return TypeName(rule.then.combine(Sample(rule.beneath), Sample(rule.top)).type);
}

std::string ResultOf(const CaTopRule& rule) {
  if (rule.make == nullptr) return "unchanged";
  const CaValue top = Sample(rule.top);
  const CaValue further = Sample(rule.further == AnyType ? TypeNothing : rule.further);
  std::array<const CaValue*, MostOperands> operands{};
  operands.fill(&further);
  operands[0] = &top;
  return TypeName(rule.make({operands.data(), static_cast<std::size_t>(rule.operands)}).type);
}

/// Keeps the rules that an operator tries.
class RuleCollector final : public CaFailureObserver {
 public:
  void NoRuleAmong(std::span<const CaRule> rules) override { Take(CombinationsOf(rules)); }
  void NoRuleAmong(std::span<const CaTopRule> rules) override { Take(CombinationsOf(rules)); }
  void Failed(const CaInterpreter&, CaFailure, const char*) override {}

  OperandTypes found;

 private:
  void Take(std::vector<Combination> combinations) { found = {std::move(combinations), true}; }
};

/// Runs the routine on values that no rule fits, so that it shows its rules and changes nothing.
/// One that needs no operands shows its result instead.
OperandTypes AskRoutine(OperatorFn function) {
  CaInterpreter interpreter;
  RuleCollector collector;
  interpreter.observer = &collector;
  for (std::size_t i = 0; i < MostOperands; ++i) interpreter.PushCopy(NothingValue);
  function(interpreter);
  if (!collector.found.fromRules) {
    collector.found = {{{{}, TypeName(interpreter.Peek(0)->Value()->type)}}, true};
  }
  return collector.found;
}

std::vector<std::string> SplitAtCommas(std::string_view list) {
  std::vector<std::string> parts;
  for (std::size_t start = 0; start < list.size();) {
    const std::size_t end = std::min(list.find(", ", start), list.size());
    parts.emplace_back(list.substr(start, end - start));
    start = end + 2;
  }
  return parts;
}

/// "12 reals" for twelve of them in a row, else one after the other.
std::string Listed(const std::vector<std::string>& operands) {
  std::string text;
  for (std::size_t i = 0; i < operands.size();) {
    std::size_t same = i + 1;
    while (same < operands.size() && operands[same] == operands[i]) ++same;
    if (!text.empty()) text += ", ";
    const bool counted = same - i > 2;
    text += counted ? std::to_string(same - i) + ' ' + operands[i] + 's' : operands[i];
    i = counted ? same : i + 1;
  }
  return text;
}

}  // namespace

std::vector<Combination> CombinationsOf(std::span<const CaRule> rules) {
  std::vector<Combination> combinations;
  for (const CaRule& rule : rules) {
    if (rule.then.combine == nullptr) continue;
    combinations.push_back({{TypeName(rule.beneath), TypeName(rule.top)}, ResultOf(rule)});
  }
  return combinations;
}

std::vector<Combination> CombinationsOf(std::span<const CaTopRule> rules) {
  std::vector<Combination> combinations;
  for (const CaTopRule& rule : rules) {
    std::vector<std::string> operands;
    for (int i = 1; i < rule.operands; ++i) operands.emplace_back(TypeName(rule.further));
    operands.emplace_back(TypeName(rule.top));
    combinations.push_back({operands, ResultOf(rule)});
  }
  return combinations;
}

OperandTypes TypesOf(const CaHelpEntry& help) {
  if (*help.operands != '\0') return {{{SplitAtCommas(help.operands), ""}}, false};
  const std::string_view name = help.name;
  return AskRoutine(name.starts_with(';') ? FindFunction(name.substr(1))->function
                                          : FindOperator(name)->function);
}

std::string CombinationText(const Combination& combination, const std::string& name) {
  const bool isSign = std::ispunct(static_cast<unsigned char>(name.front())) != 0 && name[0] != ';';
  const bool isPair = combination.operands.size() == 2 && combination.operands[0] != "any";
  if (combination.operands.empty()) return "nothing";
  if (!isSign || !isPair) return Listed(combination.operands);
  return combination.operands[0] + name + combination.operands[1];
}

}  // namespace kelcalc
