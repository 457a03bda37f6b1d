#pragma once

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

  /// Makes the norm 1 and returns this quaternion; one whose norm is less than CyLengthThreshold
  /// stays as it is. A norm that is not a number makes all four components such.
  CyQuaternion& Normalize() noexcept {
    const double length = std::sqrt(w * w + v.x * v.x + v.y * v.y + v.z * v.z);
    if (length < CyLengthThreshold) return *this;
    w /= length;
    v = v / length;
    return *this;
  }

  /// Turns this quaternion into its multiplicative inverse and returns it.
  /// Deliberate: where Normalize compares the norm, this compares the squared norm with the same
  /// number, and leaves a quaternion alone whose squared norm is not a number. Held by
  /// ShortQuaternions in quaternion_test.cpp.
  constexpr CyQuaternion& Invert() noexcept {
    const double n = (v.x * v.x + v.y * v.y + v.z * v.z) + w * w;
    if (!(n > CyLengthThreshold)) return *this;
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
  /// axis shorter than CyLengthThreshold is used as it is.
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

/// The product of two pure quaternions, or of two of which one is real. For operator*.
CyQuaternion CyShortProduct(const CyQuaternion& a, const CyQuaternion& b) noexcept;

/// The Hamilton product.
/// Deliberate: pure, real and mixed operands take short cuts of their own, in this order. For
/// finite numbers they differ from the full product in the sign of a zero only; infinities and
/// not-a-numbers come out differently. Held by ProductRules in quaternion_test.cpp.
inline CyQuaternion operator*(const CyQuaternion& a, const CyQuaternion& b) noexcept {
  const bool pure = a.w == 0.0 && b.w == 0.0;
  if (pure || a.v.IsZeroLength() || b.v.IsZeroLength()) [[unlikely]]
    return CyShortProduct(a, b);
  return {a.w * b.w - Dot(a.v, b.v), (a.w * b.v + b.w * a.v) + Cross(a.v, b.v)};
}

/// `q` times the reciprocal of `s`.
/// Deliberate: the test is one-sided. Any divisor that is not greater than 1e-6 counts as zero,
/// -2 as well: "Quaternion divided by zero!\n" goes where messages go (messages.h) and `q` is
/// returned as it is. Held by Division in quaternion_test.cpp.
CyQuaternion operator/(const CyQuaternion& q, double s) noexcept;
