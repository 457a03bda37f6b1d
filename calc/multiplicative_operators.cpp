#include "calc/multiplicative_operators.h"

#include <cstdint>
#include <limits>

#include "calc/interpreter.h"
#include "calc/rules.h"

namespace {

CyMatrix MatrixOf(const CyRotation& rotation) {
  CyMatrix matrix;
  matrix.SetRotation(rotation);
  return matrix;
}

CaValue ProductOfIntegers(const CaValue& a, const CaValue& b) {
  const auto product =
      static_cast<std::uint32_t>(a.integer) * static_cast<std::uint32_t>(b.integer);
  return CaValue(static_cast<std::int32_t>(product));
}
CaValue ProductOfReals(const CaValue& a, const CaValue& b) { return CaValue(a.real * b.real); }

CaValue VectorTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector * b.real);
}
CaValue RealTimesVector(const CaValue& a, const CaValue& b) { return VectorTimesReal(b, a); }

CaValue QuaternionTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion * b.real);
}
CaValue RealTimesQuaternion(const CaValue& a, const CaValue& b) {
  return QuaternionTimesReal(b, a);
}

// Deliberate: a rotation times a number would be expected to be a rotation; it is a quaternion,
// not of unit length. Held by the type rules of "*".
CaValue RotationTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(CyQuaternion(a.rotation) * b.real);
}
CaValue RealTimesRotation(const CaValue& a, const CaValue& b) { return RotationTimesReal(b, a); }

CaValue ScaleTimesReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeScale, a.scale * b.real);
}
CaValue RealTimesScale(const CaValue& a, const CaValue& b) { return ScaleTimesReal(b, a); }

CaValue CrossProduct(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, Cross(a.vector, b.vector));
}

// A matrix or a rotation acts on a vector or a point, whichever of the two is on top.
CaValue MatrixOnVector(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.matrix.XformVec(b.vector));
}
CaValue VectorUnderMatrix(const CaValue& a, const CaValue& b) { return MatrixOnVector(b, a); }
CaValue MatrixOnPoint(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, a.matrix.XformPoint(b.point));
}
CaValue PointUnderMatrix(const CaValue& a, const CaValue& b) { return MatrixOnPoint(b, a); }
CaValue RotationOnVector(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, MatrixOf(a.rotation).XformVec(b.vector));
}
CaValue VectorUnderRotation(const CaValue& a, const CaValue& b) { return RotationOnVector(b, a); }
CaValue RotationOnPoint(const CaValue& a, const CaValue& b) {
  return CaValue(TypePoint, MatrixOf(a.rotation).XformPoint(b.point));
}
CaValue PointUnderRotation(const CaValue& a, const CaValue& b) { return RotationOnPoint(b, a); }

CaValue ProductOfMatrices(const CaValue& a, const CaValue& b) {
  return CaValue(a.matrix * b.matrix);
}
CaValue ProductOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion * b.quaternion);
}
CaValue ProductOfRotations(const CaValue& a, const CaValue& b) {
  CyRotation rotation;
  rotation.FromMatrix(MatrixOf(a.rotation) * MatrixOf(b.rotation));
  return CaValue(rotation);
}

/// Deliberate: the processor would stop at these two; here the operator fails, silently, and the
/// operands stay. Held by the integer rows of the operator tests.
bool HasNoQuotient(std::int32_t dividend, std::int32_t divisor) {
  return divisor == 0 || (divisor == -1 && dividend == std::numeric_limits<std::int32_t>::min());
}

CaValue RemainderOfIntegers(const CaValue& a, const CaValue& b) {
  if (HasNoQuotient(a.integer, b.integer)) return {};
  return CaValue(a.integer % b.integer);
}
CaValue DotOfVectors(const CaValue& a, const CaValue& b) {
  return CaValue(Dot(a.vector, b.vector));
}
CaValue DotOfQuaternions(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion.Dot(b.quaternion));
}

CaValue QuotientOfIntegers(const CaValue& a, const CaValue& b) {
  if (HasNoQuotient(a.integer, b.integer)) return {};
  return CaValue(a.integer / b.integer);
}
CaValue QuotientOfReals(const CaValue& a, const CaValue& b) { return CaValue(a.real / b.real); }
CaValue VectorOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeVector, a.vector / b.real);
}
// A divisor that counts as zero is reported by the division itself and leaves the dividend.
CaValue QuaternionOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(a.quaternion / b.real);
}
CaValue RotationOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(CyQuaternion(a.rotation) / b.real);
}
CaValue ScaleOverReal(const CaValue& a, const CaValue& b) {
  return CaValue(TypeScale, a.scale / b.real);
}

// clang-format off
constexpr CaRule ProductRules[] = {
    // B (top)         A (beneath)      A B *
    {TypeInteger,    TypeInteger,     ProductOfIntegers},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        ProductOfReals},
    {TypeReal,       TypeVector,      VectorTimesReal},
    {TypeReal,       TypeQuaternion,  QuaternionTimesReal},
    {TypeReal,       TypeRotation,    RotationTimesReal},
    {TypeReal,       TypeScale,       ScaleTimesReal},
    {TypeReal,       AnyType,         Report},
    {TypeVector,     TypeVector,      CrossProduct},
    {TypeVector,     TypeReal,        RealTimesVector},
    {TypeVector,     TypeMatrix,      MatrixOnVector},
    {TypeVector,     TypeRotation,    RotationOnVector},
    {TypeVector,     AnyType,         Report},
    {TypePoint,      TypeMatrix,      MatrixOnPoint},
    {TypePoint,      TypeRotation,    RotationOnPoint},
    {TypePoint,      AnyType,         Report},
    {TypeMatrix,     TypeMatrix,      ProductOfMatrices},
    {TypeMatrix,     TypeVector,      VectorUnderMatrix},
    {TypeMatrix,     TypePoint,       PointUnderMatrix},
    {TypeMatrix,     AnyType,         Report},
    {TypeQuaternion, TypeQuaternion,  ProductOfQuaternions},
    {TypeQuaternion, TypeReal,        RealTimesQuaternion},
    {TypeQuaternion, AnyType,         Report},
    {TypeRotation,   TypeReal,        RealTimesRotation},
    {TypeRotation,   TypeVector,      VectorUnderRotation},
    {TypeRotation,   TypePoint,       PointUnderRotation},
    {TypeRotation,   TypeRotation,    ProductOfRotations},
    {TypeRotation,   AnyType,         Report},
    {TypeScale,      TypeReal,        RealTimesScale},
    {TypeScale,      AnyType,         Report},
    {AnyType,        AnyType,         Silent},
};

constexpr CaRule RemainderRules[] = {
    // B (top)         A (beneath)      A B %
    {TypeInteger,    TypeInteger,     RemainderOfIntegers},
    {TypeInteger,    AnyType,         Report},
    {TypeVector,     TypeVector,      DotOfVectors},
    {TypeVector,     AnyType,         Report},
    {TypeQuaternion, TypeQuaternion,  DotOfQuaternions},
    {TypeQuaternion, AnyType,         Report},
    {AnyType,        AnyType,         Silent},
};

constexpr CaRule QuotientRules[] = {
    // B (top)         A (beneath)      A B /
    {TypeInteger,    TypeInteger,     QuotientOfIntegers},
    {TypeInteger,    AnyType,         Report},
    {TypeReal,       TypeReal,        QuotientOfReals},
    {TypeReal,       TypeVector,      VectorOverReal},
    {TypeReal,       TypeQuaternion,  QuaternionOverReal},
    {TypeReal,       TypeRotation,    RotationOverReal},
    {TypeReal,       TypeScale,       ScaleOverReal},
    {TypeReal,       AnyType,         Report},
    {AnyType,        AnyType,         Silent},
};
// clang-format on

static_assert(CoversEveryPairOnce(ProductRules));
static_assert(CoversEveryPairOnce(RemainderRules));
static_assert(CoversEveryPairOnce(QuotientRules));
constexpr CaRuleGrid ProductGrid(ProductRules);
constexpr CaRuleGrid RemainderGrid(RemainderRules);
constexpr CaRuleGrid QuotientGrid(QuotientRules);

}  // namespace

int Product(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  return ApplyRules(interpreter, ProductGrid, "*");
}

int Remainder(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  return ApplyRules(interpreter, RemainderGrid, "%");
}

int Quotient(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  return ApplyRules(interpreter, QuotientGrid, "/");
}
