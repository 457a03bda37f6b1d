#pragma once

#include "geometry/pair.h"
#include "geometry/vector.h"

struct CyMatrix;
struct CyRotation;

/// A quaternion, scalar part first: in memory, in every list of arguments and in print.
/// The default is the identity. A rotation by the angle a about a unit axis u is
/// (cos a/2, u sin a/2); products compose like matrices, the right operand acting first.
/// Results are not normalised. A plain record: copy it freely, it owns nothing.
struct CyQuaternion {
  double w = 1.0;  // scalar part
  CyVector v;      // vector part

  constexpr CyQuaternion() noexcept = default;
  constexpr CyQuaternion(double w_, const CyVector& v_) noexcept : w(w_), v(v_) {}
  explicit CyQuaternion(const CyRotation& rotation) noexcept : w(0.0) { FromRotation(rotation); }

  constexpr void Set(double w_, double x, double y, double z) noexcept {
    w = w_;
    v.Set(x, y, z);
  }
  constexpr void Set(double w_, const CyVector& v_) noexcept {
    w = w_;
    v = v_;
  }

  /// Makes the norm 1 and returns this quaternion; one whose norm is less than LengthThreshold
  /// stays as it is. A norm that is not a number makes all four components such.
  CyQuaternion& Normalize() noexcept {
    const double length = std::sqrt(w * w + v.x * v.x + v.y * v.y + v.z * v.z);
    if (length < LengthThreshold) return *this;
    const Pair wx = Pair{w, v.x} / length;
    const Pair yz = Pair{v.y, v.z} / length;
    Set(wx[0], wx[1], yz[0], yz[1]);
    return *this;
  }

  /// Turns this quaternion into its multiplicative inverse and returns it.
  /// Deliberate: where Normalize compares the norm, this compares the squared norm with the same
  /// number, and leaves a quaternion alone whose squared norm is not a number. Held by
  /// ShortQuaternions in quaternion_test.cpp.
  constexpr CyQuaternion& Invert() noexcept {
    const double n = (v.x * v.x + v.y * v.y + v.z * v.z) + w * w;
    if (!(n > LengthThreshold)) return *this;
    v = v / -n;
    w /= n;
    return *this;
  }

  /// A copy of this quaternion after Invert.
  constexpr CyQuaternion Inverse() const noexcept { return CyQuaternion(*this).Invert(); }

  constexpr double Dot(const CyQuaternion& b) const noexcept {
    return w * b.w + v.x * b.v.x + v.y * b.v.y + v.z * b.v.z;
  }

  /// Takes the rotation's angle (degrees) about its axis, which need not be of unit length; an
  /// axis shorter than LengthThreshold is used as it is.
  void FromRotation(const CyRotation& rotation) noexcept;

  /// Takes the rotation of the matrix's 3 x 3 part as it is stored; kind and translation are not
  /// looked at and a scale is not corrected, so a scaled matrix gives no unit quaternion.
  void FromMatrix(const CyMatrix& matrix) noexcept;
};

constexpr CyQuaternion operator+(const CyQuaternion& a, const CyQuaternion& b) noexcept {
  return {a.w + b.w, a.v + b.v};
}

constexpr CyQuaternion operator-(const CyQuaternion& a, const CyQuaternion& b) noexcept {
  return {a.w - b.w, a.v - b.v};
}

constexpr CyQuaternion operator*(const CyQuaternion& q, double s) noexcept {
  return {q.w * s, q.v * s};
}

/// The Hamilton product.
/// Deliberate: pure, real and mixed operands take short cuts of their own, in this order. For
/// finite numbers they differ from the full product in the sign of a zero only; infinities and
/// not-a-numbers come out differently. Held by ProductRules in quaternion_test.cpp.
inline CyQuaternion operator*(const CyQuaternion& a, const CyQuaternion& b) noexcept {
  if (a.w == 0.0 && b.w == 0.0) return {-1.0 * Dot(a.v, b.v), Cross(a.v, b.v)};
  if (a.v.IsZeroLength()) return {a.w * b.w, a.w * b.v};
  if (b.v.IsZeroLength()) return {b.w * a.w, b.w * a.v};
  const Pair xy =
      (a.w * Pair{b.v.x, b.v.y} + b.w * Pair{a.v.x, a.v.y}) +
      (Pair{a.v.y, a.v.z} * Pair{b.v.z, b.v.x} - Pair{a.v.z, a.v.x} * Pair{b.v.y, b.v.z});
  const double z = (a.w * b.v.z + b.w * a.v.z) + (a.v.x * b.v.y - a.v.y * b.v.x);
  return {a.w * b.w - Dot(a.v, b.v), {xy[0], xy[1], z}};
}

/// `q` times the reciprocal of `s`.
/// Deliberate: the test is one-sided. Any divisor that is not greater than 1e-6 counts as zero,
/// -2 as well: "Quaternion divided by zero!\n" goes where messages go (messages.h) and `q` is
/// returned as it is. Held by Division in quaternion_test.cpp.
CyQuaternion operator/(const CyQuaternion& q, double s) noexcept;
