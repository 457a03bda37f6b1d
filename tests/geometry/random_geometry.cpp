#include "tests/geometry/random_geometry.h"

#include <algorithm>
#include <cmath>

bool Same(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b && std::signbit(a) == std::signbit(b);
}

bool Same(const CyVector& a, const CyVector& b) {
  return Same(a.x, b.x) && Same(a.y, b.y) && Same(a.z, b.z);
}

bool Same(const CyQuaternion& a, const CyQuaternion& b) { return Same(a.w, b.w) && Same(a.v, b.v); }

double Difference(const CyVector& a, const CyVector& b) {
  return std::max({std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z)});
}

double Difference(const CyMatrix& a, const CyMatrix& b) {
  double largest = 0.0;
  for (int i = 0; i < 12; ++i) {
    largest = std::max(largest, std::fabs(a.m[i / 4][i % 4] - b.m[i / 4][i % 4]));
  }
  return largest;
}

std::ostream& operator<<(std::ostream& out, const CyVector& v) {
  return out << '(' << v.x << ", " << v.y << ", " << v.z << ')';
}

std::ostream& operator<<(std::ostream& out, const CyQuaternion& q) {
  return out << q.w << ' ' << q.v;
}

std::ostream& operator<<(std::ostream& out, const CyMatrix& m) {
  out << "kind " << m.kind;
  for (const auto& row : m.m) {
    out << '\n' << row[0] << ' ' << row[1] << ' ' << row[2] << ' ' << row[3];
  }
  return out;
}

double RandomGeometry::Number(double low, double high) {
  state_ = state_ * 6364136223846793005U + 1442695040888963407U;
  return low + (high - low) * (static_cast<double>(state_ >> 11U) * 0x1p-53);
}

CyVector RandomGeometry::Vector() {
  const double x = Number(-10.0, 10.0);
  const double y = Number(-10.0, 10.0);
  return {x, y, Number(-10.0, 10.0)};
}

CyRotation RandomGeometry::Rotation() {
  CyVector axis = Vector();
  while (axis.Mag() < 0.1) axis = Vector();
  return {axis, Number(1.0, 359.0)};
}

CyMatrix RandomGeometry::OfKind(CyMatrixKind kind) {
  CyMatrix m;
  if (kind == MatRotate || kind == MatRigid || kind == MatScaled) m.SetRotation(Rotation());
  if (kind == MatScale || kind == MatScaled) m.ScaleBy(Number(0.1, 8.0));
  if (kind == MatTranslate || kind == MatRigid || kind == MatScaled) m.SetTrans(Vector());
  if (kind == MatGeneral) {
    for (int i = 0; i < 12; ++i) m.SetElem(i / 4, i % 4, Number(-4.0, 4.0));
    for (int i = 0; i < 3; ++i) m.m[i][i] += 12.0;  // keeps it well away from singular
  }
  return m;
}

bool KeepsPromise(const CyMatrix& m) {
  struct Promise {
    bool still, upright, unit;  // no translation; no turn; length 1
  };
  constexpr Promise Promises[] = {{true, true, true},  {false, true, true},  {true, false, true},
                                  {true, true, false}, {false, false, true}, {false, false, false}};
  if (m.kind == MatGeneral) return true;
  const Promise& promise = Promises[m.kind];
  const CyVector columns[3] = {{m.m[0][0], m.m[1][0], m.m[2][0]},
                               {m.m[0][1], m.m[1][1], m.m[2][1]},
                               {m.m[0][2], m.m[1][2], m.m[2][2]}};
  const double scale = columns[0].Mag();
  const double slack = 1e-9 * (1.0 + scale) * (1.0 + scale);
  bool kept = !promise.unit || std::fabs(scale - 1.0) < slack;
  for (int i = 0; i < 9; ++i) {
    const int r = i / 3;
    const int c = i % 3;
    const double wanted = r == c ? 1.0 : 0.0;
    const double along = promise.unit ? 1.0 : m.m[0][0];
    kept = kept && std::fabs(Dot(columns[r], columns[c]) - wanted * scale * scale) < slack;
    kept = kept && (!promise.upright || std::fabs(m.m[r][c] - wanted * along) < slack);
    kept = kept && (!promise.still || m.m[r][3] == 0.0);
  }
  return kept;
}
