#include "geometry/matrix.h"

#include <array>
#include <tuple>

#include "tests/geometry/random_geometry.h"

namespace {

constexpr CyQuaternion HalfTurn = {0.0, {0.0, 0.0, 3.0}};

CyMatrix General(CyMatrix m) {
  m.kind = MatGeneral;
  return m;
}

/// One matrix, changed step by step: what kind it becomes and where it takes (1, 1, 1).
TEST(Matrix, SettersAndKinds) {
  struct {
    void (*change)(CyMatrix&);
    CyMatrixKind kind;
    CyVector image;
  } const steps[] = {
      {[](CyMatrix& m) { m.SetTrans(1, 2, 3); }, MatTranslate, {2, 3, 4}},
      {[](CyMatrix& m) { m.ScaleBy(1); }, MatTranslate, {2, 3, 4}},
      {[](CyMatrix& m) { m.ScaleBy(2); }, MatScaled, {3, 4, 5}},
      {[](CyMatrix& m) { m.Invert(); }, MatScaled, {0, -0.5, -1}},
      {[](CyMatrix& m) { m.ScaleBy(-1); }, MatScaled, {-1, -1.5, -2}},
      {[](CyMatrix& m) { m.SetQuat(HalfTurn); }, MatScaled, {-1.5, -2, -0.5}},
      {[](CyMatrix& m) { m.SetElem(0, 1, 4); }, MatGeneral, {2.5, -2, -0.5}},
      {[](CyMatrix& m) { m.RotZ(90); }, MatRotate, {-1, 1, 1}},
      {[](CyMatrix& m) { m.SetElem(1, 3, 5); }, MatRigid, {-1, 6, 1}},
      {[](CyMatrix& m) { m.PreRotX(180); }, MatRigid, {-1, -6, -1}},
      {[](CyMatrix& m) { m.PreRotZ(180); }, MatRigid, {1, 6, -1}},
      {[](CyMatrix& m) { m.SetCol0(1, 2, 3); }, MatGeneral, {2, 7, 2}},
      {[](CyMatrix& m) { m.SetCol1(7, 8, 9); }, MatGeneral, {8, 15, 11}},
      {[](CyMatrix& m) { m.SetCol2(4, 5, 6); }, MatGeneral, {12, 20, 18}},
  };
  CyMatrix m;
  for (const auto& step : steps) {
    SCOPED_TRACE(&step - steps);
    step.change(m);
    EXPECT_EQ(m.kind, step.kind);
    EXPECT_TRUE(Same(m.XformPoint({1, 1, 1}), step.image, 8 * Epsilon));
  }
}

TEST(Matrix, AxesOfRotVec) {
  const std::tuple<CyVector, void (CyMatrix::*)(double) noexcept, double> rows[] = {
      {{0, 0, 0}, &CyMatrix::RotZ, 30},    {{0, 0, -1}, &CyMatrix::RotZ, -30},
      {{0, 0, -0.0}, &CyMatrix::RotZ, 30}, {{0.0009, -0.0009, 5}, &CyMatrix::RotZ, 30},
      {{-2, 0, 0}, &CyMatrix::RotX, -30},  {{0, 3, 0.0009}, &CyMatrix::RotY, 30},
      {{0, -3, 0}, &CyMatrix::RotY, -30},
  };
  for (const auto& [axis, turn, degrees] : rows) {
    CyMatrix expected;
    (expected.*turn)(degrees);
    EXPECT_TRUE(Same(About(axis, 30), expected));
    EXPECT_EQ(About(axis, 30).kind, MatRotate);
  }
}

/// The upper left quarters of matrices that are the identity elsewhere.
TEST(Matrix, Gauss) {
  using Quarter = std::array<double, 4>;
  struct {
    Quarter given;
    int inverted;
    Quarter inverse;
  } const rows[] = {
      {{0, 4, 2, 0}, 1, {0, 0.5, 0.25, 0}},         // needs rows exchanged
      {{1.0005, 8, 0, 1}, 1, {1, -8, 0, 1}},        // a pivot close to 1 is not divided by
      {{NotANumber, 8, 0, 1}, 1, {1, -8, 0, 1}},    // nor one that does not differ from it
      {{1, 0, 0, 0.0005}, 0, {1, 0, 0, 0.0005}},    // singular: stays
      {{0.001, 0, 0, 1}, 1, {1 / 0.001, 0, 0, 1}},  // the bound itself is no zero
      {{1, 0, 0, -0.00099}, 0, {1, 0, 0, -0.00099}}, {{0, 0, 0, 0}, 0, {0, 0, 0, 0}},
  };
  for (const auto& [given, inverted, inverse] : rows) {
    double a[4][4] = {{given[0], given[1]}, {given[2], given[3]}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    EXPECT_EQ(CyMatrix::InvertGauss4(a), inverted);
    EXPECT_EQ((Quarter{a[0][0], a[0][1], a[1][0], a[1][1]}), inverse);
  }
}

/// What holds for every kind and every pair of kinds. The short cuts give what the long ways do.
TEST(Matrix, EveryPairOfKinds) {
  RandomGeometry random;
  for (int i = 0; i < 50 * 49; ++i) {
    const CyMatrix a = random.OfKind(static_cast<CyMatrixKind>(i / 7 % 7));
    const CyMatrix b = random.OfKind(static_cast<CyMatrixKind>(i % 7));
    const CyMatrix product = a * b;
    int kind = MatIdentity;  // the first that may do what each of the two may
    while (((Freedoms[a.kind] | Freedoms[b.kind]) & ~Freedoms[kind]) != 0) ++kind;
    EXPECT_EQ(product.kind, kind);
    EXPECT_TRUE(Same(product, General(a) * General(b), 1e-11));

    const CyVector points[] = {random.Vector(), random.Vector(), random.Vector()};
    CyVector images[3];
    XformPoints(a, points, images, 3);
    for (int n = 0; n < 3; ++n) {
      const CyVector& p = points[n];
      EXPECT_TRUE(Same(images[n], a.XformPoint(p)));
      EXPECT_TRUE(Same(product.XformPoint(p), a.XformPoint(b.XformPoint(p)), 1e-10));
      EXPECT_TRUE(Same(a.XformVec(p), General(a).XformPoint(p) - a.XformPoint({}), 1e-12));
    }

    // Gauss-Jordan leaves entries below its tolerance where they are, so it is less exact.
    EXPECT_TRUE(Same(General(a.Inverse()) * a, CyMatrix(), a.kind == MatGeneral ? 2e-3 : 1e-12));
    EXPECT_EQ(a.Inverse().kind, a.kind);
  }
}

}  // namespace
