#include "geometry/rotation.h"

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
