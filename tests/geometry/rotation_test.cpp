#include "geometry/rotation.h"

#include <cmath>

#include "tests/geometry/random_geometry.h"

TEST(Rotation, FromQuaternion) {
  struct {
    CyQuaternion given;
    CyRotation expected;
  } const rows[] = {
      {{0.5, {}}, {1, 0, 0, 0}},  // no vector part
      {{-5, {}}, {1, 0, 0, 360}},
      {{3, {0, 0, 3}}, {0, 0, 1, 90}},
      {{0, {0, 3, 0}}, {0, 1, 0, 180}},
      {{1, {1e-8, 0, 0}}, {1, 0, 0, 0}},
      {{1.0000000000000002, {}}, {1, 0, 0, 0}},
  };
  for (const auto& [given, expected] : rows) {
    CyRotation r;
    r.FromQuaternion(given);
    EXPECT_TRUE(Same(r.axis, expected.axis, 2 * Epsilon));
    EXPECT_NEAR(r.angle, expected.angle, 360 * Epsilon);
  }
  // And back: an axis that is too short to be normalised is used as it is.
  EXPECT_TRUE(Same(CyQuaternion(CyRotation(0, 0, 0, 180)).v, CyVector()));
}

TEST(Rotation, SurvivesEveryConversion) {
  RandomGeometry random;
  for (int i = 0; i < 1000; ++i) {
    CyRotation given = random.Rotation();
    CyRotation back(Matrix(CyQuaternion(given)));
    // The same turn may come back about the opposite axis.
    if (Dot(back.axis, given.axis) < 0.0) back.Set(-back.axis, 360.0 - back.angle);
    // Within 0.12 degrees of a half turn the scalar part is taken for zero.
    const double halfTurn = std::fabs(given.angle - 180.0) < 0.12 ? 1.0 : 0.0;
    EXPECT_TRUE(Same(back.axis, given.axis.Normalize(), 1e-9 + 1e-3 * halfTurn));
    EXPECT_NEAR(back.angle, given.angle, 1e-8 + 0.12 * halfTurn);
  }
}
