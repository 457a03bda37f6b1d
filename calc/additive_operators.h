#pragma once

#include <cstdint>

#include "calc/dispatch.h"

/// Sums and differences of the two top values. Integers and reals do not mix.

namespace operators {

/// 32-bit arithmetic that wraps.
inline std::uint32_t Bits(std::int32_t integer) { return static_cast<std::uint32_t>(integer); }

inline CaValue SumOfIntegers(const CaValue& a, const CaValue& b) {
  return CaValue(static_cast<std::int32_t>(Bits(a.integer) + Bits(b.integer)));
}
inline CaValue SumOfReals(const CaValue& a, const CaValue& b) { return CaValue(a.real + b.real); }
inline CaValue SumOfVectors(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector + b.vector);
}
inline CaValue PointMovedByVector(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, a.point + b.vector);
}
inline CaValue VectorMovesPoint(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, b.point + a.vector);
}
inline CaValue SumOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion + b.quaternion);
}

inline CaValue DifferenceOfIntegers(const CaValue& a, const CaValue& b) {
  return CaValue(static_cast<std::int32_t>(Bits(a.integer) - Bits(b.integer)));
}
inline CaValue DifferenceOfReals(const CaValue& a, const CaValue& b) {
  return CaValue(a.real - b.real);
}
inline CaValue DifferenceOfVectors(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector - b.vector);
}
inline CaValue PointMovedBack(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, a.point - b.vector);
}
inline CaValue VectorBetweenPoints(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.point - b.point);
}
inline CaValue DifferenceOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion - b.quaternion);
}

// clang-format off
inline constexpr CaRule SumRules[] = {
    // B (top)         A (beneath)      A B +                     gives
    {TypeInteger,    TypeInteger,     SumOfIntegers,            TypeInteger},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        SumOfReals,               TypeReal},
    {TypeReal,       AnyType,         Report},
    {TypeVector,     TypeVector,      SumOfVectors,             TypeVector},
    {TypeVector,     TypePoint,       PointMovedByVector,       TypePoint},
    {TypePoint,      TypeVector,      VectorMovesPoint,         TypePoint},
    {TypeQuaternion, TypeQuaternion,  SumOfQuaternions,         TypeQuaternion},
    {AnyType,        AnyType,         Silent},
};

inline constexpr CaRule DifferenceRules[] = {
    // B (top)         A (beneath)      A B -                     gives
    {TypeInteger,    TypeInteger,     DifferenceOfIntegers,     TypeInteger},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        DifferenceOfReals,        TypeReal},
    {TypeReal,       AnyType,         Report},
    {TypeVector,     TypeVector,      DifferenceOfVectors,      TypeVector},
    {TypeVector,     TypePoint,       PointMovedBack,           TypePoint},
    {TypeVector,     AnyType,         Report},
    {TypePoint,      TypePoint,       VectorBetweenPoints,      TypeVector},
    {TypePoint,      AnyType,         Report},
    {TypeQuaternion, TypeQuaternion,  DifferenceOfQuaternions,  TypeQuaternion},
    {AnyType,        AnyType,         Silent},
};
// clang-format on

static_assert(CoversEveryPairOnce(SumRules));
static_assert(CoversEveryPairOnce(DifferenceRules));
inline constexpr CaRuleGrid SumGrid(SumRules);
inline constexpr CaRuleGrid DifferenceGrid(DifferenceRules);

inline constexpr CaOperatorEntry Sum = {
    .name = "+",
    .function = ApplyPairRules<Sum>,
    .pairs = &SumGrid,
    // Deliberate: on a short stack one would expect "+" to fail, as "-" does; it counts as done and
    // changes nothing. Held by "-- Stack --" in operators.txt.
    .onShortStack = CaShortStack::Succeeds,
    .help = {"add; move a point by a vector", "p(1,2,3) v(1,1,1) + #",
             " p(2.000000, 3.000000, 4.000000)\n"},
};

inline constexpr CaOperatorEntry Difference = {
    .name = "-",
    .function = ApplyPairRules<Difference>,
    .pairs = &DifferenceGrid,
    .help = {"subtract; the vector between two points", "p(3,2,1) p(1,1,1) - #",
             " v(2.000000, 1.000000, 0.000000)\n"},
};

}  // namespace operators
