#include "geometry/quaternion.h"

#include <cmath>
#include <cstdio>
#include <type_traits>

#include "geometry/matrix.h"
#include "geometry/rotation.h"

static_assert(std::is_trivially_copyable_v<CyQuaternion> && sizeof(CyQuaternion) == 32);

namespace {

constexpr double HalfDegreesToRadians = 0.008726646259971648;  // pi / 360

}  // namespace

CyQuaternion operator/(const CyQuaternion& q, double s) noexcept {
  if (s > LengthThreshold) return q * (1.0 / s);
  std::fputs("Quaternion divided by zero!\n", stderr);
  return q;
}

void CyQuaternion::FromRotation(const CyRotation& rotation) noexcept {
  const double half = rotation.angle * HalfDegreesToRadians;
  w = std::cos(half);
  v = rotation.axis;
  v.Normalize();
  v = v * std::sin(half);
}

/// The squares of w, x and y are tried in turn until one is large enough to divide by.
void CyQuaternion::FromMatrix(const CyMatrix& matrix) noexcept {
  const auto& m = matrix.m;
  double t = (1.0 + m[0][0] + m[1][1] + m[2][2]) * 0.25;
  if (t > LengthThreshold) {
    const double root = std::sqrt(t);
    const double d = 4.0 * root;
    const Pair xy = Pair{m[2][1] - m[1][2], m[0][2] - m[2][0]} / d;
    return Set(root, xy[0], xy[1], (m[1][0] - m[0][1]) / d);
  }
  t = (m[1][1] + m[2][2]) * -0.5;
  if (t > LengthThreshold) {
    const double root = std::sqrt(t);
    const double d = 2.0 * root;
    return Set(0.0, root, m[1][0] / d, m[2][0] / d);
  }
  t = (1.0 - m[2][2]) * 0.5;
  if (t > LengthThreshold) {
    const double root = std::sqrt(t);
    return Set(0.0, 0.0, root, m[2][1] / (2.0 * root));
  }
  Set(0.0, 0.0, 0.0, 1.0);
}
