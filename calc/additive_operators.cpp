#include "calc/additive_operators.h"

#include <cstdint>

#include "calc/interpreter.h"
#include "calc/rules.h"

namespace {

/// 32-bit arithmetic that wraps.
std::uint32_t Bits(std::int32_t integer) { return static_cast<std::uint32_t>(integer); }

CaValue SumOfIntegers(const CaValue& a, const CaValue& b) {
  return CaValue(static_cast<std::int32_t>(Bits(a.integer) + Bits(b.integer)));
}
CaValue SumOfReals(const CaValue& a, const CaValue& b) { return CaValue(a.real + b.real); }
CaValue SumOfVectors(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector + b.vector);
}
CaValue PointMovedByVector(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, a.point + b.vector);
}
CaValue VectorMovesPoint(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, b.point + a.vector);
}
CaValue SumOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion + b.quaternion);
}

CaValue DifferenceOfIntegers(const CaValue& a, const CaValue& b) {
  return CaValue(static_cast<std::int32_t>(Bits(a.integer) - Bits(b.integer)));
}
CaValue DifferenceOfReals(const CaValue& a, const CaValue& b) { return CaValue(a.real - b.real); }
CaValue DifferenceOfVectors(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector - b.vector);
}
CaValue PointMovedBack(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, a.point - b.vector);
}
CaValue VectorBetweenPoints(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.point - b.point);
}
CaValue DifferenceOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion - b.quaternion);
}

// clang-format off
constexpr CaRule SumRules[] = {
    // B (top)         A (beneath)      A B +
    {TypeInteger,    TypeInteger,     SumOfIntegers},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        SumOfReals},
    {TypeReal,       AnyType,         Report},
    {TypeVector,     TypeVector,      SumOfVectors},
    {TypeVector,     TypePoint,       PointMovedByVector},
    {TypePoint,      TypeVector,      VectorMovesPoint},
    {TypeQuaternion, TypeQuaternion,  SumOfQuaternions},
    {AnyType,        AnyType,         Silent},
};

constexpr CaRule DifferenceRules[] = {
    // B (top)         A (beneath)      A B -
    {TypeInteger,    TypeInteger,     DifferenceOfIntegers},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        DifferenceOfReals},
    {TypeReal,       AnyType,         Report},
    {TypeVector,     TypeVector,      DifferenceOfVectors},
    {TypeVector,     TypePoint,       PointMovedBack},
    {TypeVector,     AnyType,         Report},
    {TypePoint,      TypePoint,       VectorBetweenPoints},
    {TypePoint,      AnyType,         Report},
    {TypeQuaternion, TypeQuaternion,  DifferenceOfQuaternions},
    {AnyType,        AnyType,         Silent},
};
// clang-format on

static_assert(CoversEveryPairOnce(SumRules));
static_assert(CoversEveryPairOnce(DifferenceRules));
constexpr CaRuleGrid SumGrid(SumRules);
constexpr CaRuleGrid DifferenceGrid(DifferenceRules);

}  // namespace

int Sum(CaInterpreter& interpreter) {
  // Deliberate: "+" on a short stack would be expected to fail, as "-" does; it counts as done
  // and changes nothing. Held by the operator tests.
  if (interpreter.Depth() < 2) return 1;
  return ApplyRules(interpreter, SumGrid, "+");
}

int Difference(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  return ApplyRules(interpreter, DifferenceGrid, "-");
}
