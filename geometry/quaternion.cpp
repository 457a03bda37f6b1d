#include "geometry/quaternion.h"

#include <cmath>
#include <type_traits>

#include "geometry/matrix_quaternion.h"
#include "geometry/messages.h"
#include "geometry/rotation.h"

static_assert(std::is_trivially_copyable_v<CyQuaternion> && sizeof(CyQuaternion) == 32);

namespace {

constexpr double HalfDegreesToRadians = 0.008726646259971648;  // pi / 360

}  // namespace

CyQuaternion CyShortProduct(const CyQuaternion& a, const CyQuaternion& b) noexcept {
  if (a.w == 0.0 && b.w == 0.0) return {-1.0 * Dot(a.v, b.v), Cross(a.v, b.v)};
  if (a.v.IsZeroLength()) return {a.w * b.w, a.w * b.v};
  return {b.w * a.w, b.w * a.v};
}

CyQuaternion operator/(const CyQuaternion& q, double s) noexcept {
  if (s > CyLengthThreshold) return q * (1.0 / s);
  CyReport("Quaternion divided by zero!\n");
  return q;
}

void CyQuaternion::FromRotation(const CyRotation& rotation) noexcept {
  const double half = rotation.angle * HalfDegreesToRadians;
  w = std::cos(half);
  v = rotation.axis;
  v.Normalize();
  v = v * std::sin(half);
}

void CyQuaternion::FromMatrix(const CyMatrix& matrix) noexcept { *this = QuaternionOf(matrix); }
