#include "calc/rules.h"

#include <algorithm>
#include <memory>
#include <string>

#include "calc/dispatch.h"
#include "calc/interpreter.h"
#include "calc/reports.h"

namespace {

int ReportNoRule(CaInterpreter& interpreter, const CaOperatorEntry& entry) {
  return ReportTypeMismatch(interpreter, SpellingOf(entry).c_str());
}

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

int ApplyRules(CaInterpreter& interpreter, const CaRuleGrid& rules, const CaOperatorEntry& entry) {
  const CaListNode* top = interpreter.stack.head;
  const CaValue& b = *top->payload->Value();
  const CaValue& a = *top->next->payload->Value();
  const CaOutcome& outcome = rules.For(b.type, a.type);
  if (outcome.combine == nullptr) return outcome.reports ? ReportNoRule(interpreter, entry) : 0;
  std::unique_ptr<CaValue> result(new CaValue(outcome.combine(a, b)));
  if (result->type == TypeNothing) return 0;
  interpreter.Replace(2, result.release());
  return 1;
}

int ApplyForms(CaInterpreter& interpreter, const CaOperatorEntry& entry) {
  const std::int32_t top = interpreter.Peek(0)->Value()->type;
  const auto form = std::find_if(entry.forms.begin(), entry.forms.end(),
                                 [top](const CaTopRule& rule) { return rule.top == top; });
  if (form == entry.forms.end() || interpreter.Depth() < form->operands) return 0;
  if (form->make == nullptr) return 1;

  const auto count = static_cast<std::size_t>(form->operands);
  std::array<const CaValue*, MostOperands> values{};
  if (!TakeOperands(interpreter, count, form->further, values.data())) {
    return ReportNoRule(interpreter, entry);
  }
  interpreter.Replace(form->operands, new CaValue(form->make({values.data(), count})));
  return 1;
}
