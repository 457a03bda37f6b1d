/// Inversion of a matrix, in the way its kind allows.

#include <algorithm>
#include <cmath>

#include "geometry/matrix.h"
#include "geometry/pair.h"

namespace {

constexpr double PivotTolerance = 0.001;

/// The 4 x 4 array on the left, what becomes its inverse on the right. A step looks at no column of
/// the left half before its own again, so the ones and zeros that belong there are not written.
struct Elimination {
  double rows[4][8];

  explicit Elimination(const double (&a)[4][4]) {
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) {
        rows[r][c] = a[r][c];
        rows[r][c + 4] = r == c ? 1.0 : 0.0;
      }
    }
  }

  static bool IsSmall(double value) { return std::fabs(value) < PivotTolerance; }

  /// Brings a usable pivot into row `p` from below; false when there is none.
  bool FindPivot(int p) {
    if (!IsSmall(rows[p][p])) return true;
    for (int k = p + 1; k < 4; ++k) {
      if (IsSmall(rows[k][p])) continue;
      std::swap(rows[p], rows[k]);
      return true;
    }
    return false;
  }

  // Deliberate: a pivot within 0.001 of 1 is left as it is and its row is not scaled, so that row
  // of the inverse is off by as much; nor is the row of one that is not a number. Held by Gauss in
  // matrix_test.cpp.
  template <int P>
  void ScalePivotRow() {
    double* row = rows[P];
    if (!(std::fabs(row[P] - 1.0) >= PivotTolerance)) return;
    const double f = 1.0 / row[P];
    constexpr int FirstPair = (P + 2) & ~1;
    if (FirstPair != P + 1) row[P + 1] *= f;
    for (int j = FirstPair; j < 8; j += 2) CyStorePair(CyLoadPair(row + j) * f, row + j);
  }

  /// Clears column `P` of row `i` unless its entry is small; then the row stays as it is.
  /// False when that leaves the left half without an entry that is not small. Rows above the pivot
  /// keep their own pivot, and below it only the columns to the right are still in question.
  template <int P>
  bool ClearRow(int i) {
    double* row = rows[i];
    const double factor = row[P];
    if (IsSmall(factor)) return true;
    constexpr int FirstPair = (P + 2) & ~1;
    if (FirstPair != P + 1) row[P + 1] -= factor * rows[P][P + 1];
    for (int j = FirstPair; j < 8; j += 2) {
      CyStorePair(CyLoadPair(row + j) - factor * CyLoadPair(rows[P] + j), row + j);
    }
    return i < P || !std::all_of(row + P + 1, row + 4, IsSmall);
  }

  template <int P>
  bool Step() {
    if (!FindPivot(P)) return false;
    ScalePivotRow<P>();
    for (int i = 0; i < 4; ++i) {
      if (i != P && !ClearRow<P>(i)) return false;
    }
    return true;
  }

  bool Run() { return Step<0>() && Step<1>() && Step<2>() && Step<3>(); }
};

/// The rigid inverse of `a` with every element divided by the square of the scale.
CyMatrix ScaledInverse(const CyMatrix& a) {
  const auto& m = a.m;
  const CyVector t(m[0][3], m[1][3], m[2][3]);
  const double squaredScale = m[0][0] * m[0][0] + m[0][1] * m[0][1] + m[0][2] * m[0][2];
  CyMatrix inverse;
  inverse.kind = a.kind;
  for (int r = 0; r < 3; ++r) {
    const double movedBack = -(m[0][r] * t.x + m[1][r] * t.y + m[2][r] * t.z);
    CyStorePair(CyPair{m[0][r], m[1][r]} / squaredScale, inverse.m[r]);
    CyStorePair(CyPair{m[2][r], movedBack} / squaredScale, inverse.m[r] + 2);
  }
  return inverse;
}

void InvertGeneral(CyMatrix& a) {
  double array[4][4] = {{}, {}, {}, {0.0, 0.0, 0.0, 1.0}};
  for (int r = 0; r < 3; ++r) std::copy(a.m[r], a.m[r] + 4, array[r]);
  if (CyMatrix::InvertGauss4(array) == 0) return;
  for (int r = 0; r < 3; ++r) std::copy(array[r], array[r] + 4, a.m[r]);
}

}  // namespace

int CyMatrix::InvertGauss4(double (&a)[4][4]) noexcept {
  Elimination elimination(a);
  if (!elimination.Run()) return 0;
  for (int r = 0; r < 4; ++r) std::copy(elimination.rows[r] + 4, elimination.rows[r] + 8, a[r]);
  return 1;
}

void CyMatrix::Invert() noexcept {
  switch (kind) {
    case MatIdentity:
      return;
    case MatTranslate:
    case MatRotate:
    case MatRigid:
      return InvertRigid();
    case MatScale:
    case MatScaled:
      *this = ScaledInverse(*this);
      return;
    case MatGeneral:
      break;
  }
  InvertGeneral(*this);  // words that are no kind included
}

CyMatrix CyMatrix::InverseByKind() const noexcept {
  if (kind == MatScale || kind == MatScaled) return ScaledInverse(*this);
  CyMatrix inverse = *this;
  inverse.Invert();
  return inverse;
}
