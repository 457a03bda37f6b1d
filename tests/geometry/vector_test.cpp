#include "geometry/vector.h"

#include "tests/geometry/random_geometry.h"

TEST(Vector, Normalises) {
  struct {
    CyVector given, normalised;
    double length;
  } const rows[] = {
      {{3, 0, 4}, {0.6, 0, 0.8}, 5},
      {{0, 0, 0}, {0, 0, 0}, 0},
      {{1e-7, 0, 0}, {1e-7, 0, 0}, 1e-7},
      {{1e-6, 0, 0}, {1, 0, 0}, 1e-6},  // the bound itself is long enough
      {{0, -1e-6, -0.0}, {0, -1, -0.0}, 1e-6},
      {{NotANumber, 1, 0}, {NotANumber, NotANumber, NotANumber}, NotANumber},
      {{Infinity, 1, 0}, {NotANumber, 0, 0}, Infinity},
  };
  for (const auto& row : rows) {
    CyVector v = row.given;
    EXPECT_TRUE(Same(v.NormalizeMag(), row.length));
    EXPECT_TRUE(Same(v, row.normalised));
    EXPECT_TRUE(Same(CyVector(row.given).Normalize(), row.normalised));
  }
}

TEST(Vector, DivisionByZero) {
  EXPECT_TRUE(Same(CyVector(0, 2, -3) / 0.0, CyVector(NotANumber, Infinity, -Infinity)));
}

TEST(Vector, PerpendicularVectors) {
  const CyVector rows[][2] = {{{0, 0, 2}, {0, -1, 0}},
                              {{5, 0, 0}, {0, 0, -1}},
                              {{0, 0, 0}, {0, 0, 0}},
                              {{1, 9e-7, 0}, {0, 0, -1}},
                              {{1, 0, 1e-6}, {0, -1, 0}}};
  for (const auto& [given, expected] : rows) EXPECT_TRUE(Same(PerpVec(given), expected));
}
