#pragma once

#include <cfloat>
#include <cmath>

static_assert(FLT_EVAL_METHOD == 0, "doubles must be computed as doubles: compile with SSE2");

/// A length below this counts as zero. Where something is normalised the test reads "less than":
/// the bound itself still counts as a length, and so does a not-a-number, which is then divided by.
/// Where a quaternion is inverted or divided it reads "greater than": neither counts there.
inline constexpr double CyLengthThreshold = 1e-6;

/// Three doubles: a direction or displacement, a position, or three scale factors along the axes.
/// Which of them it is, its user knows. A plain record: copy it freely, it owns nothing.
///
/// Nothing here fails or reports. Sums of three products are formed from left to right.
struct CyVector {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  constexpr CyVector() noexcept = default;
  constexpr CyVector(double x_, double y_, double z_) noexcept : x(x_), y(y_), z(z_) {}

  constexpr void Set(double x_, double y_, double z_) noexcept {
    x = x_;
    y = y_;
    z = z_;
  }

  /// Replaces this vector by its cross product with `b`, this one first, and returns it.
  constexpr CyVector& CrossSelf(const CyVector& b) noexcept;

  /// The length: the square root of the sum of the squares.
  double Mag() const noexcept { return std::sqrt(x * x + y * y + z * z); }

  /// Whether Mag is exactly 0, as it also is where the squares are too small for a double. The
  /// square root is not needed for that, nor most often the other two squares.
  constexpr bool IsZeroLength() const noexcept {
    return !(x * x > 0.0) && x * x + y * y + z * z == 0.0;
  }

  /// Makes the length 1 and returns this vector; one shorter than CyLengthThreshold stays as it is.
  /// A length that is not a number makes all three components such.
  CyVector& Normalize() noexcept {
    NormalizeMag();
    return *this;
  }

  /// The same as Normalize, but returns the length from before the change.
  double NormalizeMag() noexcept {
    const double length = Mag();
    if (length < CyLengthThreshold) return length;
    x /= length;
    y /= length;
    z /= length;
    return length;
  }
};

constexpr CyVector operator-(const CyVector& a) noexcept { return {-a.x, -a.y, -a.z}; }

constexpr CyVector operator+(const CyVector& a, const CyVector& b) noexcept {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

constexpr CyVector operator-(const CyVector& a, const CyVector& b) noexcept {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

constexpr CyVector operator*(const CyVector& a, double s) noexcept {
  return {a.x * s, a.y * s, a.z * s};
}

constexpr CyVector operator*(double s, const CyVector& a) noexcept { return a * s; }

/// Each component divided by `s`.
/// Deliberate: unlike the division of a quaternion this tests nothing; a divisor of zero gives
/// infinities, and not-a-number for a component of zero. Held by AtTheBoundsOfLengths
/// in exact_bits_test.cpp.
constexpr CyVector operator/(const CyVector& a, double s) noexcept {
  return {a.x / s, a.y / s, a.z / s};
}

constexpr double Dot(const CyVector& a, const CyVector& b) noexcept {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The right-handed cross product a x b.
constexpr CyVector Cross(const CyVector& a, const CyVector& b) noexcept {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The square of the distance between two points.
constexpr double DistSq(const CyVector& a, const CyVector& b) noexcept {
  const CyVector d = a - b;
  return Dot(d, d);
}

/// A vector of length 1 perpendicular to `a`: the x axis crossed with it, or the y axis where `a`
/// is nearly parallel to x. (0, 0, 0) for the zero vector.
CyVector PerpVec(CyVector a) noexcept;

constexpr CyVector& CyVector::CrossSelf(const CyVector& b) noexcept {
  return *this = Cross(*this, b);
}
