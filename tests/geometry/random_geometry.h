#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "geometry/matrix.h"
#include "geometry/quaternion.h"
#include "geometry/rotation.h"
#include "geometry/vector.h"

/// Tolerances are multiples of this.
inline constexpr double Epsilon = std::numeric_limits<double>::epsilon();
inline constexpr double Infinity = std::numeric_limits<double>::infinity();
inline constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

using Numbers = std::vector<double>;
inline Numbers NumbersOf(const Numbers& numbers) { return numbers; }
inline Numbers NumbersOf(double number) { return {number}; }
inline Numbers NumbersOf(const CyVector& v) { return {v.x, v.y, v.z}; }
inline Numbers NumbersOf(const CyQuaternion& q) { return {q.w, q.v.x, q.v.y, q.v.z}; }
inline Numbers NumbersOf(const CyRotation& r) { return {r.axis.x, r.axis.y, r.axis.z, r.angle}; }
inline Numbers NumbersOf(const CyMatrix& matrix) { return {matrix.m[0], matrix.m[0] + 12}; }

testing::AssertionResult SameNumbers(const Numbers& a, const Numbers& b, double tolerance);

/// Whether the numbers are the same, signs of zeros included, or differ by less than the tolerance.
/// All not-a-numbers are the same.
template <typename Geometry>
testing::AssertionResult Same(const Geometry& a, const Geometry& b, double tolerance = 0.0) {
  return SameNumbers(NumbersOf(a), NumbersOf(b), tolerance);
}

/// The rotation of `q` as a matrix.
CyMatrix Matrix(const CyQuaternion& q);

/// The rotation by `degrees` about `axis`.
inline CyMatrix About(const CyVector& axis, double degrees) {
  CyMatrix m;
  m.RotVec(axis, degrees);
  return m;
}

/// What each kind may do beside what the identity does: move 1, turn 2, scale 4, anything else 8.
inline constexpr unsigned Freedoms[] = {0, 1, 2, 4, 1 + 2, 1 + 2 + 4, 1 + 2 + 4 + 8};

/// Geometry from a fixed seed, the same on every machine.
class RandomGeometry {
 public:
  double Number(double low, double high);
  CyVector Vector();      // components within -10 to 10
  CyRotation Rotation();  // 1 to 359 degrees about an axis no shorter than 0.1
  CyMatrix OfKind(CyMatrixKind kind);

 private:
  std::uint64_t state_ = 20240229;
};
