#include "calc/comparison_operators.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <tuple>

#include "calc/interpreter.h"
#include "calc/object.h"

namespace {

/// The reals on top, the deepest first. False when there are fewer, or when one is no real.
template <std::size_t N>
bool TakeReals(const CaInterpreter& interpreter, std::array<double, N>& reals) {
  if (interpreter.Depth() < static_cast<int>(N)) return false;
  const CaListNode* node = interpreter.stack.head;
  for (std::size_t i = N; i-- > 0; node = node->next) {
    const CaValue& value = *node->payload->Value();
    if (value.type != TypeReal) return false;
    reals[i] = value.real;
  }
  return true;
}

template <std::size_t N, typename Condition>
int Compare(CaInterpreter& interpreter, Condition holds) {
  std::array<double, N> operands{};
  if (!TakeReals(interpreter, operands)) return 0;
  if (!std::apply(holds, operands)) ++interpreter.skipLevel;
  interpreter.PopValues(static_cast<int>(N));
  return 1;
}

}  // namespace

// Deliberate: a not-a-number would be expected to make a condition false. Here it makes all of
// them true but "=", because each but that one asks whether the opposite fails. Held by the
// comparison rows of the operator tests.

int Less(CaInterpreter& interpreter) {
  return Compare<2>(interpreter, [](double a, double b) { return !(a >= b); });
}

int LessOrEqual(CaInterpreter& interpreter) {
  return Compare<2>(interpreter, [](double a, double b) { return !(a > b); });
}

int Greater(CaInterpreter& interpreter) {
  return Compare<2>(interpreter, [](double a, double b) { return !(a <= b); });
}

int GreaterOrEqual(CaInterpreter& interpreter) {
  return Compare<2>(interpreter, [](double a, double b) { return !(a < b); });
}

int Equal(CaInterpreter& interpreter) {
  return Compare<2>(interpreter, [](double a, double b) { return a == b; });
}

int NotEqual(CaInterpreter& interpreter) {
  return Compare<2>(interpreter, [](double a, double b) { return a != b; });
}

int Near(CaInterpreter& interpreter) {
  return Compare<3>(interpreter,
                    [](double a, double b, double e) { return !(std::fabs(a - b) > e); });
}

int NotNear(CaInterpreter& interpreter) {
  return Compare<3>(interpreter,
                    [](double a, double b, double e) { return !(std::fabs(a - b) <= e); });
}
