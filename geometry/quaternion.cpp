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

CyQuaternion operator/(const CyQuaternion& q, double s) noexcept {
  if (s > LengthThreshold) return q * (1.0 / s);
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
