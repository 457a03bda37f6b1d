#include "geometry/matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>

#include "geometry/quaternion.h"
#include "geometry/rotation.h"
#include "tests/geometry/random_geometry.h"

namespace {

constexpr double RadiansPerDegree = 0.017453292519943295;

CyMatrix Turned(void (CyMatrix::*turn)(double) noexcept, double degrees) {
  CyMatrix m;
  (m.*turn)(degrees);
  return m;
}

CyMatrix About(const CyVector& axis, double degrees) {
  CyMatrix m;
  m.RotVec(axis, degrees);
  return m;
}

/// Rodrigues' formula: `v` turned by `degrees` about the normalised axis.
CyVector Rodrigues(CyVector axis, double degrees, const CyVector& v) {
  axis.Normalize();
  const double a = degrees * RadiansPerDegree;
  return v * std::cos(a) + Cross(axis, v) * std::sin(a) +
         axis * (Dot(axis, v) * (1.0 - std::cos(a)));
}

/// The kinds are written from the description of what each operation leaves behind.
TEST(Matrix, SettersAndKinds) {
  CyMatrix m;
  EXPECT_EQ(m.kind, MatIdentity);
  m.SetTrans(1, 2, 3);
  EXPECT_EQ(m.kind, MatTranslate);
  m.ScaleBy(1.0);
  EXPECT_EQ(m.kind, MatTranslate);
  EXPECT_TRUE(Same(m.XformPoint({1, 1, 1}), CyVector(2, 3, 4)));
  EXPECT_TRUE(Same(m.XformVec({1, 1, 1}), CyVector(1, 1, 1)));
  m.SetElem(0, 0, 2);
  EXPECT_EQ(m.kind, MatGeneral);

  CyMatrix turned = Turned(&CyMatrix::RotZ, 90);
  EXPECT_EQ(turned.kind, MatRotate);
  EXPECT_LE(Difference(turned.XformVec({1, 0, 0}), {0, 1, 0}), Epsilon);
  turned.SetElem(2, 3, 5);
  EXPECT_EQ(turned.kind, MatRigid);
  EXPECT_EQ(turned.XformPoint({0, 0, 0}).z, 5.0);

  CyMatrix scaled;
  scaled.SetTrans({2, 0, 0});
  scaled.ScaleBy(2);
  EXPECT_EQ(scaled.kind, MatScaled);
  EXPECT_TRUE(Same(scaled.XformPoint({1, 1, 1}), CyVector(4, 2, 2)));
  EXPECT_TRUE(Same(scaled.Inverse().XformPoint({4, 2, 2}), CyVector(1, 1, 1)));

  scaled.SetQuat(CyQuaternion(CyRotation(0, 0, 1, 90)));  // keeps the translation
  EXPECT_EQ(scaled.kind, MatScaled);
  EXPECT_EQ(scaled.m[0][3], 2.0);
  scaled.SetCol1(7, 8, 9);
  EXPECT_EQ(scaled.kind, MatGeneral);
  EXPECT_EQ(scaled.m[2][1], 9.0);
}

TEST(Matrix, AxesOfRotVec) {
  struct Row {
    CyVector axis;
    double degrees;
    CyMatrix expected;
  };
  const Row rows[] = {
      {{0, 0, 0}, 30, Turned(&CyMatrix::RotZ, 30)},
      {{0, 0, -1}, 30, Turned(&CyMatrix::RotZ, -30)},
      {{0.0009, -0.0009, 5}, 30, Turned(&CyMatrix::RotZ, 30)},
      {{0, 0, -0.0}, 30, Turned(&CyMatrix::RotZ, 30)},
      {{-2, 0, 0}, 30, Turned(&CyMatrix::RotX, -30)},
      {{0, 3, 0.0009}, 30, Turned(&CyMatrix::RotY, 30)},
      {{0, -3, 0}, 30, Turned(&CyMatrix::RotY, -30)},
  };
  for (const Row& row : rows) {
    const CyMatrix m = About(row.axis, row.degrees);
    EXPECT_EQ(Difference(m, row.expected), 0.0) << row.axis << m;
    EXPECT_EQ(m.kind, MatRotate);
  }
  const double half = std::sqrt(0.5);
  EXPECT_LE(Difference(About({1, 0, 1}, 90).XformVec({0, 1, 0}), {-half, 0, half}), 4 * Epsilon);
  RandomGeometry random;
  for (int i = 0; i < 1000; ++i) {
    const CyRotation r = random.Rotation();
    const CyVector v = random.Vector();
    // The arc cosines lose half the digits where an axis lies close to z or to its plane.
    EXPECT_LE(Difference(About(r.axis, r.angle).XformVec(v), Rodrigues(r.axis, r.angle, v)), 1e-6)
        << r.axis << r.angle;
  }
}

TEST(Matrix, Gauss) {
  CyMatrix nearOne;  // the pivot within the tolerance of 1 is not divided by
  nearOne.SetElem(0, 0, 1.0005);
  nearOne.SetElem(0, 3, 8);
  EXPECT_EQ(nearOne.Inverse().m[0][0], 1.0);
  EXPECT_EQ(nearOne.Inverse().m[0][3], -8.0);

  CyMatrix swapped;  // needs rows exchanged
  swapped.SetCol0(0, 2, 0);
  swapped.SetCol1(4, 0, 0);
  EXPECT_EQ(swapped.Inverse().m[0][1], 0.5);
  EXPECT_EQ(swapped.Inverse().m[1][0], 0.25);

  for (const double diagonal : {0.0, 0.0005, -0.00099}) {
    CyMatrix singular;
    singular.SetElem(1, 1, diagonal);
    EXPECT_EQ(Difference(singular.Inverse(), singular), 0.0) << diagonal;
  }
  // A pivot that is not a number does not differ from 1 by 0.001 or more, so its row stays.
  double unknown[4][4] = {{NotANumber, 8, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  EXPECT_EQ(CyMatrix::InvertGauss4(unknown), 1);
  EXPECT_EQ(unknown[0][0], 1.0);
  EXPECT_EQ(unknown[0][1], -8.0);
  double none[4][4] = {};
  EXPECT_EQ(CyMatrix::InvertGauss4(none), 0);
}

/// What holds for matrices of every kind and every pair of kinds.
TEST(Matrix, EveryPairOfKinds) {
  RandomGeometry random;
  for (int round = 0; round < 50; ++round) {
    for (int pair = 0; pair < 49; ++pair) {
      const CyMatrix a = random.OfKind(static_cast<CyMatrixKind>(pair / 7));
      const CyMatrix b = random.OfKind(static_cast<CyMatrixKind>(pair % 7));
      ASSERT_EQ(a.kind, pair / 7);
      const CyMatrix product = a * b;
      EXPECT_EQ(product.kind, MatKindProduct[a.kind][b.kind]);
      EXPECT_TRUE(KeepsPromise(product)) << product;
      const CyVector p = random.Vector();
      EXPECT_LE(Difference(product.XformPoint(p), a.XformPoint(b.XformPoint(p))), 1e-10)
          << a << '\n'
          << b;
      EXPECT_LE(Difference(product.XformVec(p), a.XformVec(b.XformVec(p))), 1e-10);

      const CyMatrix inverse = a.Inverse();
      EXPECT_EQ(inverse.kind, a.kind);
      EXPECT_TRUE(KeepsPromise(inverse)) << inverse;
      // Gauss-Jordan leaves entries below its tolerance where they are, so it is less exact.
      EXPECT_LE(Difference(inverse.XformPoint(a.XformPoint(p)), p), 1e-2) << a;
      if (a.kind != MatGeneral) {
        EXPECT_LE(Difference(inverse.XformPoint(a.XformPoint(p)), p), 1e-11) << a;
      }

      CyMatrix turned = a;
      turned.PreRotX(30);
      EXPECT_LE(Difference(turned.XformVec(p), Turned(&CyMatrix::RotX, 30).XformVec(a.XformVec(p))),
                1e-12 * 400);
      EXPECT_TRUE(KeepsPromise(turned)) << turned;
      turned.PreRotZ(-70);
      turned.ScaleBy(-3);
      EXPECT_TRUE(KeepsPromise(turned)) << turned;
      CyMatrix self = a;
      self = self * self;
      EXPECT_EQ(Difference(self, a * a), 0.0);
    }
  }
}

TEST(Matrix, ManyPointsInPlace) {
  RandomGeometry random;
  for (int kind = MatIdentity; kind <= MatGeneral; ++kind) {
    const CyMatrix m = random.OfKind(static_cast<CyMatrixKind>(kind));
    CyVector points[5];
    CyVector expected[5];
    for (int i = 0; i < 5; ++i) expected[i] = m.XformPoint(points[i] = random.Vector());
    XformPoints(m, points, points, 5);
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(Same(points[i], expected[i])) << m;
  }
}

void Mix(std::uint64_t& hash, double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  hash = (hash ^ bits) * 1099511628211U;
}

void Mix(std::uint64_t& hash, const CyVector& v) {
  for (const double component : {v.x, v.y, v.z}) Mix(hash, component);
}

/// Sums in their order, no contraction: the bits are the same on every machine and at every level
/// of optimisation. Only what needs no sine and no arc cosine, which come from the platform.
TEST(Matrix, BitsAreTheSameEverywhere) {
  RandomGeometry random;
  std::uint64_t matrices = 14695981039346656037U;
  std::uint64_t quaternions = matrices;
  for (int i = 0; i < 500; ++i) {
    const CyMatrix a = random.OfKind(MatGeneral);
    CyMatrix b = random.OfKind(MatGeneral);
    b.kind = MatScaled;
    const CyMatrix result = a * b * a.Inverse() * b.Inverse();
    for (int e = 0; e < 12; ++e) Mix(matrices, result.m[e / 4][e % 4]);
    CyVector points[3] = {random.Vector(), random.Vector(), random.Vector()};
    XformPoints(result, points, points, 3);
    for (const CyVector& point : points) Mix(matrices, point);

    CyQuaternion q{random.Number(-2, 2), random.Vector()};  // braces: from left to right
    const CyQuaternion r{random.Number(-2, 2), PerpVec(random.Vector())};
    q = q * r * q.Inverse() / 3.0;
    CyMatrix turned;
    turned.SetQuat(q);
    q.FromMatrix(turned);
    Mix(quaternions, q.Normalize().w);
    Mix(quaternions, q.v);
  }
  EXPECT_EQ(matrices, 7306787955926891997U);
  EXPECT_EQ(quaternions, 18053925981119355072U);
}

}  // namespace
