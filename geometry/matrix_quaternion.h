#pragma once

#include <cmath>

#include "geometry/matrix.h"
#include "geometry/quaternion.h"

/// What CyQuaternion::FromMatrix gives, where it is wanted in registers.
/// The squares of w, x and y are tried in turn until one is large enough to divide by.
inline CyQuaternion QuaternionOf(const CyMatrix& matrix) noexcept {
  const auto& m = matrix.m;
  double t = (1.0 + m[0][0] + m[1][1] + m[2][2]) * 0.25;
  if (t > CyLengthThreshold) {
    const double w = std::sqrt(t);
    const double d = 4.0 * w;
    const CyPair xy = CyPair{m[2][1] - m[1][2], m[0][2] - m[2][0]} / d;
    return {w, {xy[0], xy[1], (m[1][0] - m[0][1]) / d}};
  }
  t = (m[1][1] + m[2][2]) * -0.5;
  if (t > CyLengthThreshold) {
    const double x = std::sqrt(t);
    const double d = 2.0 * x;
    return {0.0, {x, m[1][0] / d, m[2][0] / d}};
  }
  t = (1.0 - m[2][2]) * 0.5;
  if (t > CyLengthThreshold) {
    const double y = std::sqrt(t);
    return {0.0, {0.0, y, m[2][1] / (2.0 * y)}};
  }
  return {0.0, {0.0, 0.0, 1.0}};
}
