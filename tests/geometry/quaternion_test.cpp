#include "geometry/quaternion.h"

#include <gtest/gtest.h>

#include "geometry/matrix.h"
#include "geometry/rotation.h"
#include "tests/geometry/random_geometry.h"

namespace {

CyQuaternion Q(double w, double x, double y, double z) { return {w, {x, y, z}}; }

TEST(Quaternion, ProductRules) {
  struct Row {
    CyQuaternion a, b, product;
  };
  const Row rows[] = {
      {Q(0, 1, 0, 0), Q(0, 0, 1, 0), Q(-0.0, 0, 0, 1)},  // both pure
      {Q(0, 1, 0, 0), Q(0, 1, 0, 0), Q(-1, 0, 0, 0)},
      {Q(0, Infinity, 0, 0), Q(-0.0, 0, 1, 0), Q(NotANumber, 0, NotANumber, Infinity)},
      {Q(2, 0, 0, 0), Q(3, 1, -2, 0), Q(6, 2, -4, 0)},  // a is real
      {Q(2, 0, -0.0, 0), Q(3, Infinity, 0, 0), Q(6, Infinity, 0, 0)},
      {Q(3, 1, -2, 0), Q(2, 0, 0, 0), Q(6, 2, -4, 0)},  // b is real
      {Q(0, 1, 2, 3), Q(-2, 0, 0, 0), Q(-0.0, -2, -4, -6)},
      {Q(1, 2, 3, 4), Q(5, 6, 7, 8), Q(-60, 12, 30, 24)},  // neither
      {Q(1, 0, 0, 1), Q(0, 1, 0, 0), Q(0, 1, 1, 0)},
  };
  for (const Row& row : rows) {
    EXPECT_TRUE(Same(row.a * row.b, row.product))
        << row.a << " * " << row.b << " = " << row.a * row.b;
  }
}

TEST(Quaternion, ShortQuaternions) {
  struct Row {
    CyQuaternion given, normalised, inverted;
  };
  const CyQuaternion none = Q(NotANumber, NotANumber, NotANumber, NotANumber);
  const Row rows[] = {
      {Q(2, 0, 0, 0), Q(1, 0, 0, 0), Q(0.5, -0.0, -0.0, -0.0)},
      {Q(0, 0, 3, 4), Q(0, 0, 0.6, 0.8), Q(0, -0.0, -0.12, -0.16)},
      {Q(0, 0, 0, 0), Q(0, 0, 0, 0), Q(0, 0, 0, 0)},
      {Q(1e-3, 0, 0, 0), Q(1, 0, 0, 0), Q(1e-3, 0, 0, 0)},  // long, but its square is short
      {Q(1e-7, 0, 0, 0), Q(1e-7, 0, 0, 0), Q(1e-7, 0, 0, 0)},
      {Q(NotANumber, 1, 2, 3), none, Q(NotANumber, 1, 2, 3)},
  };
  for (const Row& row : rows) {
    EXPECT_TRUE(Same(CyQuaternion(row.given).Normalize(), row.normalised)) << row.given;
    EXPECT_TRUE(Same(row.given.Inverse(), row.inverted)) << row.given << row.given.Inverse();
  }
}

TEST(Quaternion, Division) {
  const CyQuaternion two = Q(2, 0, 0, 4);
  for (const double divisor : {0.0, 1e-6, -2.0, NotANumber}) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(Same(two / divisor, two)) << divisor;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Quaternion divided by zero!\n") << divisor;
  }
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Same(two / 2.0, Q(1, 0, 0, 2)));
  EXPECT_TRUE(Same(Q(5, 0, 0, 0) / 49.0, Q(5 * (1.0 / 49.0), 0, 0, 0)));  // by the reciprocal
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Quaternion, FromRotation) {
  const double half = 0.7071067811865476;
  EXPECT_LE(Difference(CyQuaternion(CyRotation(0, 0, 2, 90)).v, {0, 0, half}), Epsilon);
  EXPECT_NEAR(CyQuaternion(CyRotation(0, 0, 2, 90)).w, half, Epsilon);
  EXPECT_TRUE(Same(CyQuaternion(CyRotation(0, 0, 0, 90)).v, CyVector()));
}

TEST(Quaternion, FromMatrixBranches) {
  struct Row {
    double diagonal[3];
    CyQuaternion expected;
  };
  const Row rows[] = {{{1, 1, 1}, Q(1, 0, 0, 0)},
                      {{1, -1, -1}, Q(0, 1, 0, 0)},
                      {{-1, 1, -1}, Q(0, 0, 1, 0)},
                      {{-1, -1, 1}, Q(0, 0, 0, 1)}};
  for (const Row& row : rows) {
    CyMatrix m;
    for (int i = 0; i < 3; ++i) m.m[i][i] = row.diagonal[i];
    CyQuaternion q;
    q.FromMatrix(m);
    EXPECT_TRUE(Same(q, row.expected)) << q;
  }
}

TEST(Quaternion, AgreesWithMatrices) {
  RandomGeometry random;
  for (int i = 0; i < 1000; ++i) {
    const CyQuaternion a(random.Rotation());
    const CyQuaternion b(random.Rotation());
    CyMatrix ma, mb, mab;
    ma.SetQuat(a);
    mb.SetQuat(b);
    mab.SetQuat(a * b);
    EXPECT_LE(Difference(ma * mb, mab), 16 * Epsilon);
    CyQuaternion back;
    back.FromMatrix(ma);
    // A scalar part below 0.001 is taken for zero; above that its digits are lost little by little.
    EXPECT_NEAR(std::fabs(back.Dot(a)), 1.0, std::fabs(a.w) < 0.002 ? 1e-5 : 1e-10) << a;
  }
}

}  // namespace
