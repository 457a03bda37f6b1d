#include "geometry/rotation.h"

#include <cmath>
#include <type_traits>

#include "geometry/matrix.h"
#include "geometry/quaternion.h"

static_assert(std::is_trivially_copyable_v<CyRotation> && sizeof(CyRotation) == 32);

namespace {

constexpr double TwiceRadiansToDegrees = 114.59155902616465;  // 360 / pi

/// `k` kept within -1 to 1; a not-a-number passes.
double Clamped(double k) {
  if (k > 1.0) return 1.0;
  if (k < -1.0) return -1.0;
  return k;
}

}  // namespace

void CyRotation::FromQuaternion(const CyQuaternion& q) noexcept {
  CyQuaternion unit = q;
  unit.Normalize();
  angle = std::acos(Clamped(unit.w)) * TwiceRadiansToDegrees;
  axis = unit.v;
  if (axis.NormalizeMag() < LengthThreshold) axis.Set(1.0, 0.0, 0.0);
}

void CyRotation::FromMatrix(const CyMatrix& matrix) noexcept {
  CyQuaternion q;
  q.FromMatrix(matrix);
  FromQuaternion(q);
}
