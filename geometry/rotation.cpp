#include "geometry/rotation.h"

#include <cmath>
#include <type_traits>

#include "geometry/matrix_quaternion.h"

static_assert(std::is_trivially_copyable_v<CyRotation> && sizeof(CyRotation) == 32);

namespace {

constexpr double TwiceRadiansToDegrees = 114.59155902616465;  // 360 / pi

/// `k` kept within -1 to 1; a not-a-number passes.
double Clamped(double k) {
  if (k > 1.0) return 1.0;
  if (k < -1.0) return -1.0;
  return k;
}

/// What FromQuaternion gives; inline, so that a quaternion just made stays in registers.
inline CyRotation RotationOf(CyQuaternion q) {
  q.Normalize();
  CyVector axis = q.v;
  if (axis.NormalizeMag() < CyLengthThreshold) axis.Set(1.0, 0.0, 0.0);
  return {axis, std::acos(Clamped(q.w)) * TwiceRadiansToDegrees};
}

}  // namespace

void CyRotation::FromQuaternion(const CyQuaternion& q) noexcept { *this = RotationOf(q); }

void CyRotation::FromMatrix(const CyMatrix& matrix) noexcept {
  *this = RotationOf(QuaternionOf(matrix));
}
