#include "geometry/vector.h"

#include <gtest/gtest.h>

#include "tests/geometry/random_geometry.h"

TEST(Vector, Normalises) {
  struct Row {
    CyVector given, normalised;
    double length;
  };
  const Row rows[] = {
      {{3, 0, 4}, {0.6, 0, 0.8}, 5},
      {{0, 0, 0}, {0, 0, 0}, 0},
      {{1e-7, 0, 0}, {1e-7, 0, 0}, 1e-7},
      {{1e-6, 0, 0}, {1, 0, 0}, 1e-6},  // the bound itself is long enough
      {{0, -1e-6, -0.0}, {0, -1, -0.0}, 1e-6},
      {{NotANumber, 1, 0}, {NotANumber, NotANumber, NotANumber}, NotANumber},
      {{Infinity, 1, 0}, {NotANumber, 0, 0}, Infinity},
  };
  for (const Row& row : rows) {
    CyVector v = row.given;
    EXPECT_TRUE(Same(v.NormalizeMag(), row.length)) << row.given;
    EXPECT_TRUE(Same(v, row.normalised)) << row.given << " became " << v;
    v = row.given;
    EXPECT_TRUE(Same(v.Normalize(), row.normalised)) << row.given;
  }
}

TEST(Vector, DivisionByZero) {
  EXPECT_TRUE(Same(CyVector(1, 2, -3) / 0.0, CyVector(Infinity, Infinity, -Infinity)));
  EXPECT_TRUE(Same(CyVector(0, 2, 3) / 0.0, CyVector(NotANumber, Infinity, Infinity)));
  EXPECT_TRUE(Same(CyVector(1, 0, 0) / 3.0, CyVector(1.0 / 3.0, 0, 0)));
}

TEST(Vector, Products) {
  const CyVector x(1, 0, 0);
  const CyVector y(0, 1, 0);
  EXPECT_TRUE(Same(Cross(x, y), CyVector(0, 0, 1)));
  CyVector self = x;
  EXPECT_EQ(&self.CrossSelf(y), &self);
  EXPECT_TRUE(Same(self, CyVector(0, 0, 1)));
  CyVector squared(1, 2, 3);
  EXPECT_TRUE(Same(squared.CrossSelf(squared), CyVector(0, 0, 0)));
  EXPECT_EQ(DistSq({1, 1, 1}, {2, 3, 4}), 14.0);
  // From left to right: the small number is lost only if it meets the large one first.
  EXPECT_EQ(Dot({1e16, 1, -1e16}, {1, 1, 1}), 0.0);
  EXPECT_EQ(Dot({1e16, -1e16, 1}, {1, 1, 1}), 1.0);
}

TEST(Vector, PerpendicularVectors) {
  const CyVector rows[][2] = {{{0, 0, 2}, {0, -1, 0}},
                              {{5, 0, 0}, {0, 0, -1}},
                              {{0, 0, 0}, {0, 0, 0}},
                              {{1, 9e-7, 0}, {0, 0, -1}},
                              {{1, 0, 1e-6}, {0, -1, 0}}};
  for (const auto& row : rows) EXPECT_EQ(Difference(PerpVec(row[0]), row[1]), 0.0) << row[0];
  RandomGeometry random;
  for (int i = 0; i < 1000; ++i) {
    const CyVector v = random.Vector();
    EXPECT_LE(std::fabs(Dot(PerpVec(v), v)), 8 * Epsilon * v.Mag()) << v;
    EXPECT_NEAR(PerpVec(v).Mag(), 1.0, 4 * Epsilon) << v;
  }
}
