#pragma once

#include <cstdint>
#include <limits>

#include "calc/dispatch.h"

/// Products, remainders and quotients of the two top values.

namespace operators {

inline CyMatrix MatrixOf(const CyRotation& rotation) {
  CyMatrix matrix;
  matrix.SetRotation(rotation);
  return matrix;
}

inline CaValue ProductOfIntegers(const CaValue& a, const CaValue& b) {
  const auto product =
      static_cast<std::uint32_t>(a.integer) * static_cast<std::uint32_t>(b.integer);
  return CaValue(static_cast<std::int32_t>(product));
}
inline CaValue ProductOfReals(const CaValue& a, const CaValue& b) {
  return CaValue(a.real * b.real);
}

inline CaValue VectorTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector * b.real);
}
inline CaValue RealTimesVector(const CaValue& a, const CaValue& b) { return VectorTimesReal(b, a); }

inline CaValue QuaternionTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion * b.real);
}
inline CaValue RealTimesQuaternion(const CaValue& a, const CaValue& b) {
  return QuaternionTimesReal(b, a);
}

// Deliberate: a rotation times a number would be expected to be a rotation; it is a quaternion, not
// of unit length. Held by "r(0,0,9,180) 2 *" in operators.txt.
inline CaValue RotationTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(CyQuaternion(a.rotation) * b.real);
}
inline CaValue RealTimesRotation(const CaValue& a, const CaValue& b) {
  return RotationTimesReal(b, a);
}

inline CaValue ScaleTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeScale, a.scale * b.real);
}
inline CaValue RealTimesScale(const CaValue& a, const CaValue& b) { return ScaleTimesReal(b, a); }

inline CaValue CrossProduct(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, Cross(a.vector, b.vector));
}

// A matrix or a rotation acts on a vector or a point, whichever of the two is on top.
inline CaValue MatrixOnVector(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.matrix.XformVec(b.vector));
}
inline CaValue VectorUnderMatrix(const CaValue& a, const CaValue& b) {
  return MatrixOnVector(b, a);
}
inline CaValue MatrixOnPoint(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, a.matrix.XformPoint(b.point));
}
inline CaValue PointUnderMatrix(const CaValue& a, const CaValue& b) { return MatrixOnPoint(b, a); }
inline CaValue RotationOnVector(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, MatrixOf(a.rotation).XformVec(b.vector));
}
inline CaValue VectorUnderRotation(const CaValue& a, const CaValue& b) {
  return RotationOnVector(b, a);
}
inline CaValue RotationOnPoint(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, MatrixOf(a.rotation).XformPoint(b.point));
}
inline CaValue PointUnderRotation(const CaValue& a, const CaValue& b) {
  return RotationOnPoint(b, a);
}

inline CaValue ProductOfMatrices(const CaValue& a, const CaValue& b) {
  return CaValue(a.matrix * b.matrix);
}
inline CaValue ProductOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion * b.quaternion);
}
inline CaValue ProductOfRotations(const CaValue& a, const CaValue& b) {
  CyRotation rotation;
  rotation.FromMatrix(MatrixOf(a.rotation) * MatrixOf(b.rotation));
  return CaValue(rotation);
}

/// Deliberate: the processor would stop at these two; here the operator fails, silently, and the
/// operands stay. Held by WrapAndDivideTowardsZero in objects_test.cpp.
inline bool HasNoQuotient(std::int32_t dividend, std::int32_t divisor) {
  return divisor == 0 || (divisor == -1 && dividend == std::numeric_limits<std::int32_t>::min());
}

inline CaValue RemainderOfIntegers(const CaValue& a, const CaValue& b) {
  if (HasNoQuotient(a.integer, b.integer)) return {};
  return CaValue(a.integer % b.integer);
}
inline CaValue DotOfVectors(const CaValue& a, const CaValue& b) {
  return CaValue(Dot(a.vector, b.vector));
}
inline CaValue DotOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion.Dot(b.quaternion));
}

inline CaValue QuotientOfIntegers(const CaValue& a, const CaValue& b) {
  if (HasNoQuotient(a.integer, b.integer)) return {};
  return CaValue(a.integer / b.integer);
}
inline CaValue QuotientOfReals(const CaValue& a, const CaValue& b) {
  return CaValue(a.real / b.real);
}
inline CaValue VectorOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector / b.real);
}
// A divisor that counts as zero is reported by the division itself and leaves the dividend.
inline CaValue QuaternionOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion / b.real);
}
inline CaValue RotationOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(CyQuaternion(a.rotation) / b.real);
}
inline CaValue ScaleOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeScale, a.scale / b.real);
}

// clang-format off
inline constexpr CaRule ProductRules[] = {
    // B (top)         A (beneath)      A B *                     gives
    {TypeInteger,    TypeInteger,     ProductOfIntegers,        TypeInteger},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        ProductOfReals,           TypeReal},
    {TypeReal,       TypeVector,      VectorTimesReal,          TypeVector},
    {TypeReal,       TypeQuaternion,  QuaternionTimesReal,      TypeQuaternion},
    {TypeReal,       TypeRotation,    RotationTimesReal,        TypeQuaternion},
    {TypeReal,       TypeScale,       ScaleTimesReal,           TypeScale},
    {TypeReal,       AnyType,         Report},
    {TypeVector,     TypeVector,      CrossProduct,             TypeVector},
    {TypeVector,     TypeReal,        RealTimesVector,          TypeVector},
    {TypeVector,     TypeMatrix,      MatrixOnVector,           TypeVector},
    {TypeVector,     TypeRotation,    RotationOnVector,         TypeVector},
    {TypeVector,     AnyType,         Report},
    {TypePoint,      TypeMatrix,      MatrixOnPoint,            TypePoint},
    {TypePoint,      TypeRotation,    RotationOnPoint,          TypePoint},
    {TypePoint,      AnyType,         Report},
    {TypeMatrix,     TypeMatrix,      ProductOfMatrices,        TypeMatrix},
    {TypeMatrix,     TypeVector,      VectorUnderMatrix,        TypeVector},
    {TypeMatrix,     TypePoint,       PointUnderMatrix,         TypePoint},
    {TypeMatrix,     AnyType,         Report},
    {TypeQuaternion, TypeQuaternion,  ProductOfQuaternions,     TypeQuaternion},
    {TypeQuaternion, TypeReal,        RealTimesQuaternion,      TypeQuaternion},
    {TypeQuaternion, AnyType,         Report},
    {TypeRotation,   TypeReal,        RealTimesRotation,        TypeQuaternion},
    {TypeRotation,   TypeVector,      VectorUnderRotation,      TypeVector},
    {TypeRotation,   TypePoint,       PointUnderRotation,       TypePoint},
    {TypeRotation,   TypeRotation,    ProductOfRotations,       TypeRotation},
    {TypeRotation,   AnyType,         Report},
    {TypeScale,      TypeReal,        RealTimesScale,           TypeScale},
    {TypeScale,      AnyType,         Report},
    {AnyType,        AnyType,         Silent},
};

inline constexpr CaRule RemainderRules[] = {
    // B (top)         A (beneath)      A B %                     gives
    {TypeInteger,    TypeInteger,     RemainderOfIntegers,      TypeInteger},
    {TypeInteger,    AnyType,         Report},
    {TypeVector,     TypeVector,      DotOfVectors,             TypeReal},
    {TypeVector,     AnyType,         Report},
    {TypeQuaternion, TypeQuaternion,  DotOfQuaternions,         TypeReal},
    {TypeQuaternion, AnyType,         Report},
    {AnyType,        AnyType,         Silent},
};

inline constexpr CaRule QuotientRules[] = {
    // B (top)         A (beneath)      A B /                     gives
    {TypeInteger,    TypeInteger,     QuotientOfIntegers,       TypeInteger},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        QuotientOfReals,          TypeReal},
    {TypeReal,       TypeVector,      VectorOverReal,           TypeVector},
    {TypeReal,       TypeQuaternion,  QuaternionOverReal,       TypeQuaternion},
    {TypeReal,       TypeRotation,    RotationOverReal,         TypeQuaternion},
    {TypeReal,       TypeScale,       ScaleOverReal,            TypeScale},
    {TypeReal,       AnyType,         Report},
    {AnyType,        AnyType,         Silent},
};
// clang-format on

static_assert(CoversEveryPairOnce(ProductRules));
static_assert(CoversEveryPairOnce(RemainderRules));
static_assert(CoversEveryPairOnce(QuotientRules));
inline constexpr CaRuleGrid ProductGrid(ProductRules);
inline constexpr CaRuleGrid RemainderGrid(RemainderRules);
inline constexpr CaRuleGrid QuotientGrid(QuotientRules);

inline constexpr CaOperatorEntry Product = {
    .name = "*",
    .function = ApplyPairRules<Product>,
    .pairs = &ProductGrid,
    .help = {"multiply; compose, transform, scale", "r(0,0,1,90) p(1,2,3) * #",
             " p(-2.000000, 1.000000, 3.000000)\n"},
};

inline constexpr CaOperatorEntry Remainder = {
    .name = "%",
    .function = ApplyPairRules<Remainder>,
    .pairs = &RemainderGrid,
    .help = {"remainder of integers; dot product of vectors", "v(1,2,3) v(4,5,6) % #",
             " 32.000000\n"},
};

inline constexpr CaOperatorEntry Quotient = {
    .name = "/",
    .function = ApplyPairRules<Quotient>,
    .pairs = &QuotientGrid,
    .help = {"divide", "v(2,4,6) 2 / #", " v(1.000000, 2.000000, 3.000000)\n"},
};

}  // namespace operators
