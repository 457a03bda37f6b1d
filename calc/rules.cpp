#include "calc/rules.h"

#include <algorithm>
#include <memory>

#include "calc/failure_observer.h"
#include "calc/interpreter.h"
#include "calc/reports.h"

namespace {

template <typename Rule>
void TellNoRule(const CaInterpreter& interpreter, std::span<const Rule> rules) {
  if (interpreter.observer != nullptr) interpreter.observer->NoRuleAmong(rules);
}

}  // namespace

int ApplyRules(CaInterpreter& interpreter, const CaRuleGrid& rules, const char* name) {
  const CaListNode* top = interpreter.stack.head;
  const CaValue& b = *top->payload->Value();
  const CaValue& a = *top->next->payload->Value();
  const CaOutcome& outcome = rules.For(b.type, a.type);
  if (outcome.combine == nullptr) {
    TellNoRule(interpreter, rules.Rules());
    return outcome.reports ? ReportTypeMismatch(interpreter, name) : 0;
  }
  std::unique_ptr<CaValue> result(new CaValue(outcome.combine(a, b)));
  if (result->type == TypeNothing) return 0;
  interpreter.Replace(2, result.release());
  return 1;
}

namespace {

/// The values of the `count` top entries; false when one beneath the top is not of type `further`.
bool TakeOperands(const CaInterpreter& interpreter, std::size_t count, CaType further,
                  const CaValue** values) {
  const CaListNode* node = interpreter.stack.head;
  for (std::size_t i = 0; i < count; ++i, node = node->next) {
    values[i] = node->payload->Value();
    if (i > 0 && values[i]->type != further) return false;
  }
  return true;
}

}  // namespace

int ApplyTopRules(CaInterpreter& interpreter, std::span<const CaTopRule> rules, const char* name) {
  const std::int32_t top = interpreter.Peek(0)->Value()->type;
  const auto rule = std::find_if(rules.begin(), rules.end(),
                                 [top](const CaTopRule& row) { return row.top == top; });
  if (rule == rules.end()) {
    TellNoRule(interpreter, rules);
    return 0;
  }
  if (rule->operands == 0) return 1;
  if (interpreter.Depth() < rule->operands) {
    TellNoRule(interpreter, rules);
    return 0;
  }

  const auto count = static_cast<std::size_t>(rule->operands);
  std::array<const CaValue*, MostOperands> values{};
  if (!TakeOperands(interpreter, count, rule->further, values.data())) {
    TellNoRule(interpreter, rules);
    return ReportTypeMismatch(interpreter, name);
  }
  interpreter.Replace(rule->operands, new CaValue(rule->make({values.data(), count})));
  return 1;
}
