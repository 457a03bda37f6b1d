#pragma once

#include <cstdint>
#include <limits>
#include <ostream>

#include "geometry/matrix.h"
#include "geometry/quaternion.h"
#include "geometry/rotation.h"
#include "geometry/vector.h"

/// Tolerances are multiples of this.
inline constexpr double Epsilon = std::numeric_limits<double>::epsilon();
inline constexpr double Infinity = std::numeric_limits<double>::infinity();
inline constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

/// Whether two numbers are the same, signs of zeros included; all not-a-numbers are.
bool Same(double a, double b);
bool Same(const CyVector& a, const CyVector& b);
bool Same(const CyQuaternion& a, const CyQuaternion& b);

/// The largest absolute difference between two elements.
double Difference(const CyVector& a, const CyVector& b);
double Difference(const CyMatrix& a, const CyMatrix& b);

std::ostream& operator<<(std::ostream& out, const CyVector& v);
std::ostream& operator<<(std::ostream& out, const CyQuaternion& q);
std::ostream& operator<<(std::ostream& out, const CyMatrix& m);

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

/// Whether `m` is, to a tolerance, what its kind lets others rely on.
bool KeepsPromise(const CyMatrix& m);
