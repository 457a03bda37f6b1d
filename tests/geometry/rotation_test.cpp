#include "geometry/rotation.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geometry/matrix.h"
#include "geometry/quaternion.h"
#include "tests/geometry/random_geometry.h"

TEST(Rotation, FromQuaternion) {
  struct Row {
    CyQuaternion given;
    CyVector axis;
    double angle;
  };
  const double half = 0.7071067811865476;
  const Row rows[] = {
      {{}, {1, 0, 0}, 0},                     // no vector part
      {{half, {0, 0, half}}, {0, 0, 1}, 90},  //
      {{-5, {0, 0, 0}}, {1, 0, 0}, 360},      //
      {{0, {0, 3, 0}}, {0, 1, 0}, 180},
      {{1, {1e-8, 0, 0}}, {1, 0, 0}, 0},
      {{1.0000000000000002, {0, 0, 0}}, {1, 0, 0}, 0},
  };
  for (const Row& row : rows) {
    CyRotation r;
    r.FromQuaternion(row.given);
    EXPECT_LE(Difference(r.axis, row.axis), 2 * Epsilon) << row.given;
    EXPECT_NEAR(r.angle, row.angle, 360 * Epsilon) << row.given;
  }
}

TEST(Rotation, SurvivesEveryConversion) {
  RandomGeometry random;
  for (int i = 0; i < 1000; ++i) {
    const CyRotation given = random.Rotation();
    CyMatrix m;
    m.SetQuat(CyQuaternion(given));
    const CyRotation back(m);
    // The same turn may come back about the opposite axis.
    const double sign = Dot(back.axis, given.axis) < 0.0 ? -1.0 : 1.0;
    const double angle = sign < 0.0 ? 360.0 - back.angle : back.angle;
    CyVector axis = given.axis;
    // Within 0.12 degrees of a half turn the scalar part is taken for zero.
    const double halfTurn = std::fabs(given.angle - 180.0) < 0.12 ? 1.0 : 0.0;
    EXPECT_LE(Difference(sign * back.axis, axis.Normalize()), 1e-9 + 1e-3 * halfTurn) << given.axis;
    EXPECT_NEAR(angle, given.angle, 1e-8 + 0.12 * halfTurn) << given.axis;
  }
}
