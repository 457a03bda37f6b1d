#include "geometry/matrix.h"

#include <cmath>
#include <type_traits>

#include "geometry/messages.h"
#include "geometry/quaternion.h"
#include "geometry/rotation.h"

static_assert(std::is_trivially_copyable_v<CyMatrix> && sizeof(CyMatrixKind) == 4);

namespace {

constexpr double DegreesToRadians = 0.017453292519943295;  // pi / 180
constexpr double RadiansToDegrees = 57.29577951308232;     // 180 / pi
constexpr double AxisTolerance = 0.001;

struct SineAndCosine {
  double sine;
  double cosine;

  explicit SineAndCosine(double degrees)
      : sine(std::sin(degrees * DegreesToRadians)), cosine(std::cos(degrees * DegreesToRadians)) {}
};

/// Turns two rows by an angle: the first loses what the second gains.
void TurnRows(double (&first)[4], double (&second)[4], const SineAndCosine& turn) {
  for (int c = 0; c < 4; ++c) {
    const double a = first[c];
    const double b = second[c];
    first[c] = turn.cosine * a - turn.sine * b;
    second[c] = turn.sine * a + turn.cosine * b;
  }
}

bool CountsAsZero(double component) { return std::fabs(component) < AxisTolerance; }

CyVector Translation(const CyMatrix& a) { return {a.m[0][3], a.m[1][3], a.m[2][3]}; }

CyMatrix WithTranslation(CyMatrix a, const CyVector& t, CyMatrixKind kind) {
  a.SetTrans(t);
  a.kind = kind;
  return a;
}

/// The linear part of `a` applied to `v`, whatever the kind, plus `t`.
CyVector Moved(const CyMatrix& a, const CyVector& v, const CyVector& t) {
  const auto& m = a.m;
  return {m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z + t.x,
          m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z + t.y,
          m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z + t.z};
}

/// The angle in degrees between `p` and the z axis, 0 to 180; false when `p` is too short.
bool AngleFromZ(const CyVector& p, double& degrees) {
  const double length = p.Mag();
  if (length < AxisTolerance) {
    CyReport("CyMatrix::RotVec(): error in temp vector mag.\n");
    return false;
  }
  degrees = std::acos(Dot(CyVector(0.0, 0.0, 1.0), p) / length) * RadiansToDegrees;
  return true;
}

}  // namespace

void CyMatrix::RotX(double degrees) noexcept {
  const SineAndCosine turn(degrees);
  Identity();
  m[1][1] = m[2][2] = turn.cosine;
  m[2][1] = turn.sine;
  m[1][2] = -turn.sine;
  kind = MatRotate;
}

void CyMatrix::RotY(double degrees) noexcept {
  const SineAndCosine turn(degrees);
  Identity();
  m[0][0] = m[2][2] = turn.cosine;
  m[0][2] = turn.sine;
  m[2][0] = -turn.sine;
  kind = MatRotate;
}

void CyMatrix::RotZ(double degrees) noexcept {
  const SineAndCosine turn(degrees);
  Identity();
  m[0][0] = m[1][1] = turn.cosine;
  m[1][0] = turn.sine;
  m[0][1] = -turn.sine;
  kind = MatRotate;
}

void CyMatrix::PreRotX(double degrees) noexcept {
  TurnRows(m[1], m[2], SineAndCosine(degrees));
  kind = KindOfProduct(kind, MatRotate);
}

void CyMatrix::PreRotZ(double degrees) noexcept {
  TurnRows(m[0], m[1], SineAndCosine(degrees));
  kind = KindOfProduct(kind, MatRotate);
}

void CyMatrix::ScaleBy(double s) noexcept {
  if (s == 1.0) return;
  for (auto& row : m) {
    for (int c = 0; c < 3; ++c) row[c] *= s;
  }
  kind = KindOfProduct(kind, MatScale);
}

void CyMatrix::SetQuat(const CyQuaternion& q) noexcept {
  CyQuaternion unit = q;
  unit.Normalize();
  const double w = unit.w;
  const auto [x, y, z] = unit.v;
  m[0][0] = 1.0 - 2.0 * (y * y + z * z);
  m[0][1] = 2.0 * (x * y - w * z);
  m[0][2] = 2.0 * (x * z + w * y);
  m[1][0] = 2.0 * (z * w + x * y);
  m[1][1] = 1.0 - 2.0 * (x * x + z * z);
  m[1][2] = 2.0 * (y * z - w * x);
  m[2][0] = 2.0 * (x * z - w * y);
  m[2][1] = 2.0 * (x * w + z * y);
  m[2][2] = 1.0 - 2.0 * (x * x + y * y);
  kind = KindOfProduct(kind, MatRotate);
}

/// The axis is turned onto z, the rotation made about z, and the turn undone.
void CyMatrix::RotVec(const CyVector& axis, double degrees) noexcept {
  const auto [x, y, z] = axis;
  if (CountsAsZero(x) && CountsAsZero(y)) return RotZ(z < 0.0 ? -degrees : degrees);
  if (CountsAsZero(y) && CountsAsZero(z)) return RotX(x < 0.0 ? -degrees : degrees);
  if (CountsAsZero(z) && CountsAsZero(x)) return RotY(y < 0.0 ? -degrees : degrees);

  // Deliberate: neither angle can fail here, since the cases above took the axes that are too
  // short; the tests and their message stay all the same.
  double toPlane = 0.0;
  if (!AngleFromZ({x, 0.0, z}, toPlane)) return;
  CyMatrix turn;
  turn.RotY(x < 0.0 ? toPlane : -toPlane);
  const CyVector inPlane = turn.XformVec({x, y, z});
  double toAxis = 0.0;
  if (!AngleFromZ(inPlane, toAxis)) return;
  turn.PreRotX(inPlane.y < 0.0 ? -toAxis : toAxis);
  const CyMatrix back = turn.Inverse();
  turn.PreRotZ(degrees);
  *this = back * turn;
}

void CyMatrix::SetRotation(const CyRotation& rotation) noexcept {
  RotVec(rotation.axis, rotation.angle);
}

void XformPoints(const CyMatrix& matrix, const CyVector* points, CyVector* results,
                 std::size_t count) noexcept {
  const CyMatrix local = matrix;  // which no result can overwrite
  if (local.kind < MatRigid || local.kind > MatGeneral) {
    for (std::size_t i = 0; i < count; ++i) results[i] = local.XformPoint(points[i]);
  } else {
    const CyVector t = Translation(local);
    for (std::size_t i = 0; i < count; ++i) results[i] = Moved(local, points[i], t);
  }
}

CyMatrix CyMatrix::ProductByKind(const CyMatrix& a, const CyMatrix& b) noexcept {
  if (a.kind == MatIdentity) return b;
  if (a.kind == MatTranslate) {
    if (b.kind == MatIdentity) return a;
    return WithTranslation(b, Translation(b) + Translation(a), KindOfProduct(MatTranslate, b.kind));
  }
  if (b.kind == MatIdentity) return a;
  if (b.kind == MatTranslate) {
    return WithTranslation(a, Moved(a, Translation(b), Translation(a)),
                           KindOfProduct(a.kind, MatTranslate));
  }
  return FullProduct(a, b);
}
