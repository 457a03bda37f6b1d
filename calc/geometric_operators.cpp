#include "calc/geometric_operators.h"

#include <cmath>

#include "calc/angles.h"
#include "calc/interpreter.h"
#include "calc/rules.h"

namespace {

constexpr double LengthThreshold = 1e-6;
constexpr double ParallelThreshold = 0.999999;
constexpr double AntiParallelThreshold = -0.999999;

CaValue PowerOfReals(const CaValue& base, const CaValue& exponent) {
  return CaValue(std::pow(base.real, exponent.real));
}

/// An axis and the cosine of the angle about it.
struct Turn {
  CyVector axis;
  double cosine;
};

/// The turn between two unit vectors.
Turn TurnBetweenUnits(const CyVector& a, const CyVector& b) {
  const double cosine = Dot(a, b);
  if (cosine <= AntiParallelThreshold) return {PerpVec(a), -1.0};
  if (cosine >= ParallelThreshold) return {PerpVec(a), 1.0};
  // Deliberate: one would expect a unit vector; the axis is the cross product as it stands, as
  // long as the sine of the angle. Held by the geometric rows of the operator tests.
  return {Cross(a, b), cosine};
}

/// Comparisons are false for a not-a-number, which therefore counts as a length.
Turn TurnBetween(CyVector a, CyVector b) {
  const bool fromNowhere = a.NormalizeMag() < LengthThreshold;
  const bool toNowhere = b.NormalizeMag() < LengthThreshold;
  if (fromNowhere && toNowhere) return {CyVector(1.0, 0.0, 0.0), 1.0};
  if (fromNowhere) return {PerpVec(b), 1.0};
  if (toNowhere) return {PerpVec(a), 1.0};
  return TurnBetweenUnits(a, b);
}

CaValue RotationOfVectors(const CaValue& from, const CaValue& to) {
  const Turn turn = TurnBetween(from.vector, to.vector);
  return CaValue(CyRotation(turn.axis, std::acos(turn.cosine) * RadiansToDegrees));
}

// clang-format off
constexpr CaRule PowerRules[] = {
    // B (top)         A (beneath)      A B ^
    {TypeReal,       TypeReal,        PowerOfReals},
    {AnyType,        AnyType,         Silent},
};

constexpr CaRule RotationRules[] = {
    // B (top)         A (beneath)      A B @
    {TypeVector,     TypeVector,      RotationOfVectors},
    {AnyType,        AnyType,         Silent},
};
// clang-format on

static_assert(CoversEveryPairOnce(PowerRules));
static_assert(CoversEveryPairOnce(RotationRules));
constexpr CaRuleGrid PowerGrid(PowerRules);
constexpr CaRuleGrid RotationGrid(RotationRules);

}  // namespace

int Power(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  return ApplyRules(interpreter, PowerGrid, "^");
}

int RotationBetween(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  return ApplyRules(interpreter, RotationGrid, "@");
}
