/// Inversion of a matrix, in the way its kind allows.

#include <algorithm>
#include <cmath>

#include "geometry/matrix.h"

namespace {

constexpr double PivotTolerance = 0.001;

/// The 4 x 4 array on the left, what becomes its inverse on the right.
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

  bool IsLeftHalfSmall(int row) const { return std::all_of(rows[row], rows[row] + 4, IsSmall); }

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
  // of the inverse is off by as much. Held by Gauss in matrix_test.cpp.
  void ScalePivotRow(int p) {
    double* row = rows[p];
    if (!(std::fabs(row[p] - 1.0) >= PivotTolerance)) return;
    const double f = 1.0 / row[p];
    for (int j = p + 1; j < 8; ++j) row[j] *= f;
    row[p] = 1.0;
  }

  /// Clears column `p` of row `i`, small entries excepted; false when the row is left empty.
  bool ClearRow(int i, int p) {
    double* row = rows[i];
    const double factor = row[p];
    if (IsSmall(factor)) return true;
    for (int j = p + 1; j < 8; ++j) row[j] -= factor * rows[p][j];
    row[p] = 0.0;
    return !IsLeftHalfSmall(i);
  }

  bool Run() {
    for (int p = 0; p < 4; ++p) {
      if (!FindPivot(p)) return false;
      ScalePivotRow(p);
      for (int i = 0; i < 4; ++i) {
        if (i != p && !ClearRow(i, p)) return false;
      }
    }
    return true;
  }
};

void InvertScaled(CyMatrix& a) {
  const auto& m = a.m;
  const double squaredScale = m[0][0] * m[0][0] + m[0][1] * m[0][1] + m[0][2] * m[0][2];
  a.InvertRigid();
  for (auto& row : a.m) {
    for (double& element : row) element /= squaredScale;
  }
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

void CyMatrix::InvertRigid() noexcept {
  const CyVector t(m[0][3], m[1][3], m[2][3]);
  *this = {kind,
           {{m[0][0], m[1][0], m[2][0], -(m[0][0] * t.x + m[1][0] * t.y + m[2][0] * t.z)},
            {m[0][1], m[1][1], m[2][1], -(m[0][1] * t.x + m[1][1] * t.y + m[2][1] * t.z)},
            {m[0][2], m[1][2], m[2][2], -(m[0][2] * t.x + m[1][2] * t.y + m[2][2] * t.z)}}};
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
      return InvertScaled(*this);
    case MatGeneral:
      break;
  }
  InvertGeneral(*this);  // words that are no kind included
}

CyMatrix CyMatrix::Inverse() const noexcept {
  CyMatrix inverse = *this;
  inverse.Invert();
  return inverse;
}
