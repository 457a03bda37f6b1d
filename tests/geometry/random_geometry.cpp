#include "tests/geometry/random_geometry.h"

#include <algorithm>
#include <bit>
#include <cmath>

testing::AssertionResult SameNumbers(const Numbers& a, const Numbers& b, double tolerance) {
  const auto agree = [tolerance](double x, double y) {
    const bool same = std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
    return same || (std::isnan(x) && std::isnan(y)) || std::fabs(x - y) < tolerance;
  };
  if (std::ranges::equal(a, b, agree)) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << testing::PrintToString(a) << " is not " << testing::PrintToString(b);
}

CyMatrix Matrix(const CyQuaternion& q) {
  CyMatrix m;
  m.SetQuat(q);
  return m;
}

double RandomGeometry::Number(double low, double high) {
  state_ = state_ * 6364136223846793005U + 1442695040888963407U;
  return low + (high - low) * (static_cast<double>(state_ >> 11U) * 0x1p-53);
}

CyVector RandomGeometry::Vector() {
  return {Number(-10.0, 10.0), Number(-10.0, 10.0), Number(-10.0, 10.0)};
}

CyRotation RandomGeometry::Rotation() {
  CyVector axis = Vector();
  while (axis.Mag() < 0.1) axis = Vector();
  return {axis, Number(1.0, 359.0)};
}

CyMatrix RandomGeometry::OfKind(CyMatrixKind kind) {
  CyMatrix m;
  for (int i = 0; kind == MatGeneral && i < 12; ++i) {
    // A large diagonal keeps it well away from singular.
    m.SetElem(i / 4, i % 4, Number(-4.0, 4.0) + (i % 5 == 0 ? 12.0 : 0.0));
  }
  if (kind == MatGeneral) return m;
  if ((Freedoms[kind] & 2U) != 0) m.SetRotation(Rotation());
  if ((Freedoms[kind] & 4U) != 0) m.ScaleBy(Number(0.1, 8.0));
  if ((Freedoms[kind] & 1U) != 0) m.SetTrans(Vector());
  return m;
}
