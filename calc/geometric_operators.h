#pragma once

#include <cmath>

#include "calc/dispatch.h"
#include "calc/scalar_functions.h"

/// A power of reals, and the rotation between two vectors. Both fail silently.

namespace operators {

inline constexpr double LengthThreshold = 1e-6;
inline constexpr double ParallelThreshold = 0.999999;
inline constexpr double AntiParallelThreshold = -0.999999;

inline CaValue PowerOfReals(const CaValue& base, const CaValue& exponent) {
  return CaValue(std::pow(base.real, exponent.real));
}

/// An axis and the cosine of the angle about it.
struct Turn {
  CyVector axis;
  double cosine;
};

/// The turn between two unit vectors.
inline Turn TurnBetweenUnits(const CyVector& a, const CyVector& b) {
  const double cosine = Dot(a, b);
  if (cosine <= AntiParallelThreshold) return {PerpVec(a), -1.0};
  if (cosine >= ParallelThreshold) return {PerpVec(a), 1.0};
  // Deliberate: one would expect a unit vector; the axis is the cross product as it stands, as long
  // as the sine of the angle. Held by "-- Power and turn --" in operators.txt.
  return {Cross(a, b), cosine};
}

/// Comparisons are false for a not-a-number, which therefore counts as a length.
inline Turn TurnBetween(CyVector a, CyVector b) {
  const bool fromNowhere = a.NormalizeMag() < LengthThreshold;
  const bool toNowhere = b.NormalizeMag() < LengthThreshold;
  if (fromNowhere && toNowhere) return {CyVector(1.0, 0.0, 0.0), 1.0};
  if (fromNowhere) return {PerpVec(b), 1.0};
  if (toNowhere) return {PerpVec(a), 1.0};
  return TurnBetweenUnits(a, b);
}

inline CaValue RotationOfVectors(const CaValue& from, const CaValue& to) {
  const Turn turn = TurnBetween(from.vector, to.vector);
  return CaValue(CyRotation(turn.axis, std::acos(turn.cosine) * RadiansToDegrees));
}

// clang-format off
inline constexpr CaRule PowerRules[] = {
    // B (top)         A (beneath)      A B ^                     gives
    {TypeReal,       TypeReal,        PowerOfReals,             TypeReal},
    {AnyType,        AnyType,         Silent},
};

inline constexpr CaRule TurnRules[] = {
    // B (top)         A (beneath)      A B @                     gives
    {TypeVector,     TypeVector,      RotationOfVectors,        TypeRotation},
    {AnyType,        AnyType,         Silent},
};
// clang-format on

static_assert(CoversEveryPairOnce(PowerRules));
static_assert(CoversEveryPairOnce(TurnRules));
inline constexpr CaRuleGrid PowerGrid(PowerRules);
inline constexpr CaRuleGrid TurnGrid(TurnRules);

inline constexpr CaOperatorEntry Power = {
    .name = "^",
    .function = ApplyPairRules<Power>,
    .pairs = &PowerGrid,
    .help = {"raise to a power", "2 10 ^ #", " 1024.000000\n"},
};

inline constexpr CaOperatorEntry RotationBetween = {
    .name = "@",
    .function = ApplyPairRules<RotationBetween>,
    .pairs = &TurnGrid,
    .help = {"the rotation that turns one vector into another", "v(1,0,0) v(0,1,0) @ ;a #",
             " 90.000000\n"},
};

}  // namespace operators
