#include "geometry/quaternion.h"

#include <string>

#include "geometry/messages.h"
#include "tests/geometry/random_geometry.h"

namespace {

CyQuaternion Q(double w, double x, double y, double z) { return {w, {x, y, z}}; }

TEST(Quaternion, ProductRules) {
  const CyQuaternion rows[][3] = {
      {Q(0, 1, 0, 0), Q(0, 0, 1, 0), Q(-0.0, 0, 0, 1)},  // both pure
      {Q(0, 1, 2, 0), Q(0, 1, 1, 0), Q(-3, 0, 0, -1)},
      {Q(0, Infinity, 0, 0), Q(-0.0, 0, 1, 0), Q(NotANumber, 0, NotANumber, Infinity)},
      {Q(2, 0, 0, 0), Q(3, 1, -2, 0), Q(6, 2, -4, 0)},      // a is real
      {Q(2, 0, 0, 0), Q(3, -0.0, 0, 0), Q(6, -0.0, 0, 0)},  // both are: the same way
      {Q(2, 1e-200, -0.0, 0), Q(3, Infinity, 0, 0), Q(6, Infinity, 0, 0)},
      {Q(3, Infinity, -2, 0), Q(2, 0, 0, 0), Q(6, Infinity, -4, 0)},  // b is real
      {Q(0, 1, 2, 3), Q(-2, 0, 0, 0), Q(-0.0, -2, -4, -6)},
      {Q(1, 2, 3, 4), Q(5, 6, 7, 8), Q(-60, 12, 30, 24)},  // neither
  };
  for (const auto& [a, b, product] : rows) EXPECT_TRUE(Same(a * b, product));
}

TEST(Quaternion, ShortQuaternions) {
  const CyQuaternion none = Q(NotANumber, NotANumber, NotANumber, NotANumber);
  const CyQuaternion rows[][3] = {
      // given, normalised, inverted
      {Q(2, 0, 0, 0), Q(1, 0, 0, 0), Q(0.5, -0.0, -0.0, -0.0)},
      {Q(0, 0, 3, 4), Q(0, 0, 0.6, 0.8), Q(0, -0.0, -0.12, -0.16)},
      {Q(0, 0, 0, 0), Q(0, 0, 0, 0), Q(0, 0, 0, 0)},
      {Q(9e-4, 0, 0, 0), Q(1, 0, 0, 0), Q(9e-4, 0, 0, 0)},  // long, but its square is short
      {Q(1e-7, 0, 0, 0), Q(1e-7, 0, 0, 0), Q(1e-7, 0, 0, 0)},
      {Q(NotANumber, 1, 2, 3), none, Q(NotANumber, 1, 2, 3)},
  };
  for (const auto& [given, normalised, inverted] : rows) {
    EXPECT_TRUE(Same(CyQuaternion(given).Normalize(), normalised));
    EXPECT_TRUE(Same(given.Inverse(), inverted));
  }
}

TEST(Quaternion, Division) {
  const auto take = [](void* to, const char* message) noexcept {
    *static_cast<std::string*>(to) = message;
  };
  for (const double divisor : {0.0, 1e-6, -2.0, NotANumber}) {
    std::string outer, inner;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(Same(Q(2, 0, 0, 4) / divisor, Q(2, 0, 0, 4))) << divisor;
    const CyMessageScope toOuter(take, &outer);
    {
      const CyMessageScope toInner(take, &inner);
      Q(1, 0, 0, 0) / divisor;
    }
    Q(1, 0, 0, 0) / divisor;
    for (const std::string& taken : {testing::internal::GetCapturedStderr(), inner, outer}) {
      EXPECT_EQ(taken, "Quaternion divided by zero!\n") << divisor;
    }
  }
}

}  // namespace
