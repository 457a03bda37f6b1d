#pragma once

#include <cstddef>
#include <cstdint>

#include "geometry/pair.h"
#include "geometry/vector.h"

struct CyQuaternion;
struct CyRotation;

/// What a matrix is known to be. It may claim more freedom than the numbers use, never less:
/// the operations take their short cuts by it and do not look at the numbers.
enum CyMatrixKind : std::int32_t {
  MatIdentity = 0,   // the identity
  MatTranslate = 1,  // identity linear part, any translation
  MatRotate = 2,     // a rotation, no translation
  MatScale = 3,      // a uniform scale, no translation
  MatRigid = 4,      // rotation and translation
  MatScaled = 5,     // rotation, uniform scale and translation
  MatGeneral = 6,    // anything
};

/// The kind of a product, by the kinds of its left (row) and its right operand (column).
/// Columns 1 to 3 are also what setting a translation, a rotation or a uniform scale makes of a
/// kind.
inline constexpr CyMatrixKind MatKindProduct[7][7] = {
    {MatIdentity, MatTranslate, MatRotate, MatScale, MatRigid, MatScaled, MatGeneral},
    {MatTranslate, MatTranslate, MatRigid, MatScaled, MatRigid, MatScaled, MatGeneral},
    {MatRotate, MatRigid, MatRotate, MatScaled, MatRigid, MatScaled, MatGeneral},
    {MatScale, MatScaled, MatScaled, MatScale, MatScaled, MatScaled, MatGeneral},
    {MatRigid, MatRigid, MatRigid, MatScaled, MatRigid, MatScaled, MatGeneral},
    {MatScaled, MatScaled, MatScaled, MatScaled, MatScaled, MatScaled, MatGeneral},
    {MatGeneral, MatGeneral, MatGeneral, MatGeneral, MatGeneral, MatGeneral, MatGeneral},
};

/// The entry of MatKindProduct; MatGeneral for words that are no kind.
constexpr CyMatrixKind KindOfProduct(CyMatrixKind left, CyMatrixKind right) noexcept {
  const auto row = static_cast<std::uint32_t>(left);
  const auto column = static_cast<std::uint32_t>(right);
  return row <= MatGeneral && column <= MatGeneral ? MatKindProduct[row][column] : MatGeneral;
}

/// An affine transform of column vectors: three rows by four columns, the last column the
/// translation; the fourth row is always (0, 0, 0, 1) and not stored. The columns 0 to 2 are the
/// images of the axes. Angles are degrees, rotations right-handed. The default is the identity.
/// A plain record: copy it freely, it owns nothing. No operation allocates or checks an index.
struct CyMatrix {
  CyMatrixKind kind = MatIdentity;
  double m[3][4] = {{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}};

  /// Becomes the identity.
  constexpr void Identity() noexcept { *this = CyMatrix(); }

  /// Sets one column of the linear part. The kind becomes MatGeneral, whatever the numbers.
  constexpr void SetCol0(double u0, double u1, double u2) noexcept { SetColumn(0, u0, u1, u2); }
  constexpr void SetCol1(double u0, double u1, double u2) noexcept { SetColumn(1, u0, u1, u2); }
  constexpr void SetCol2(double u0, double u1, double u2) noexcept { SetColumn(2, u0, u1, u2); }

  /// Sets the translation; the linear part stays.
  constexpr void SetTrans(double x, double y, double z) noexcept {
    m[0][3] = x;
    m[1][3] = y;
    m[2][3] = z;
    kind = KindOfProduct(kind, MatTranslate);
  }
  constexpr void SetTrans(const CyVector& t) noexcept { SetTrans(t.x, t.y, t.z); }

  /// Sets one element: `row` 0 to 2, `column` 0 to 3. The kind becomes MatGeneral unless the
  /// element belongs to the translation.
  constexpr void SetElem(int row, int column, double value) noexcept {
    m[row][column] = value;
    kind = column == 3 ? KindOfProduct(kind, MatTranslate) : MatGeneral;
  }

  /// Become the rotation by `degrees` about one axis.
  void RotX(double degrees) noexcept;
  void RotY(double degrees) noexcept;
  void RotZ(double degrees) noexcept;

  /// Multiply from the left by the rotation by `degrees` about one axis, translation included.
  void PreRotX(double degrees) noexcept;
  void PreRotZ(double degrees) noexcept;

  /// Multiplies the linear part by `s`; the translation stays. A factor of exactly 1 changes
  /// nothing, not even the kind.
  void ScaleBy(double s) noexcept;

  /// Sets the linear part to the rotation of `q`, which need not be of unit length; the
  /// translation stays.
  void SetQuat(const CyQuaternion& q) noexcept;

  /// Becomes the rotation by `degrees` about `axis`, which need not be of unit length.
  /// Axis components below 0.001 count as zero: an axis of one such component left is taken as
  /// that axis exactly, the zero axis as z. In two cases that the others already exclude it sends
  /// "CyMatrix::RotVec(): error in temp vector mag.\n" where messages go (messages.h) and changes
  /// nothing.
  void RotVec(const CyVector& axis, double degrees) noexcept;

  /// RotVec of the rotation's axis and angle.
  void SetRotation(const CyRotation& rotation) noexcept;

  /// Inverts this matrix in the way its kind allows; the kind stays. A general matrix that is
  /// singular as InvertGauss4 judges it stays exactly as it is.
  void Invert() noexcept;

  /// A copy of this matrix after Invert.
  CyMatrix Inverse() const noexcept;

  /// Inverts a rigid transform: the linear part is transposed, the translation becomes minus the
  /// transpose applied to it. The kind stays.
  void InvertRigid() noexcept { *this = RigidInverse(); }

  /// Inverts a 4 x 4 matrix, row by row, by Gauss-Jordan elimination and returns 1; 0 leaves it as
  /// it was. Numbers whose absolute value is below 0.001 count as zero, so a matrix of a very
  /// small scale counts as singular.
  static int InvertGauss4(double (&a)[4][4]) noexcept;

  /// This matrix applied to a direction: without the translation.
  CyVector XformVec(const CyVector& v) const noexcept;

  /// This matrix applied to a position: with the translation where the kind admits one.
  CyVector XformPoint(const CyVector& p) const noexcept;

 private:
  friend CyMatrix operator*(const CyMatrix& a, const CyMatrix& b) noexcept;

  constexpr void SetColumn(int column, double u0, double u1, double u2) noexcept {
    m[0][column] = u0;
    m[1][column] = u1;
    m[2][column] = u2;
    kind = MatGeneral;
  }

  CyMatrix RigidInverse() const noexcept;
  CyMatrix InverseByKind() const noexcept;
  static CyMatrix FullProduct(const CyMatrix& a, const CyMatrix& b) noexcept;
  static CyMatrix ProductByKind(const CyMatrix& a, const CyMatrix& b) noexcept;
};

/// XformPoint of `count` points, from `points` to `results`, which may be the same place.
void XformPoints(const CyMatrix& matrix, const CyVector* points, CyVector* results,
                 std::size_t count) noexcept;

/// The transform that applies `b` first and then `a`.
CyMatrix operator*(const CyMatrix& a, const CyMatrix& b) noexcept;

inline CyVector CyMatrix::XformVec(const CyVector& v) const noexcept {
  if (kind == MatIdentity || kind == MatTranslate) return v;
  return {m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z,
          m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z,
          m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z};
}

inline CyVector CyMatrix::XformPoint(const CyVector& p) const noexcept {
  if (static_cast<std::uint32_t>(kind) >= MatRigid) {  // the frequent ones; no kind at all as well
    return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
            m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
            m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
  }
  if (kind == MatTranslate) return {p.x + m[0][3], p.y + m[1][3], p.z + m[2][3]};
  return XformVec(p);  // the others have no translation
}

/// The product without a look at the kinds: every element a sum of three products in their order,
/// the translation added last.
inline CyMatrix CyMatrix::FullProduct(const CyMatrix& a, const CyMatrix& b) noexcept {
  const CyPair left[] = {CyLoadPair(b.m[0]), CyLoadPair(b.m[1]), CyLoadPair(b.m[2])};
  const CyPair right[] = {CyLoadPair(b.m[0] + 2), CyLoadPair(b.m[1] + 2), CyLoadPair(b.m[2] + 2)};
  CyPair first[3];
  CyPair second[3];
  for (int r = 0; r < 3; ++r) {
    const auto& row = a.m[r];
    first[r] = row[0] * left[0] + row[1] * left[1] + row[2] * left[2];
    // A negative zero is what leaves every number as it is when added.
    second[r] = (row[0] * right[0] + row[1] * right[1] + row[2] * right[2]) + CyPair{-0.0, row[3]};
  }
  return {KindOfProduct(a.kind, b.kind),
          {{first[0][0], first[0][1], second[0][0], second[0][1]},
           {first[1][0], first[1][1], second[1][0], second[1][1]},
           {first[2][0], first[2][1], second[2][0], second[2][1]}}};
}

inline CyMatrix operator*(const CyMatrix& a, const CyMatrix& b) noexcept {
  // Neither can be the identity or a translation, for which there are short cuts.
  if (a.kind >= MatRotate && b.kind >= MatRotate) return CyMatrix::FullProduct(a, b);
  return CyMatrix::ProductByKind(a, b);
}

inline CyMatrix CyMatrix::RigidInverse() const noexcept {
  const double x = m[0][3];
  const double y = m[1][3];
  const double z = m[2][3];
  return {kind,
          {{m[0][0], m[1][0], m[2][0], -(m[0][0] * x + m[1][0] * y + m[2][0] * z)},
           {m[0][1], m[1][1], m[2][1], -(m[0][1] * x + m[1][1] * y + m[2][1] * z)},
           {m[0][2], m[1][2], m[2][2], -(m[0][2] * x + m[1][2] * y + m[2][2] * z)}}};
}

inline CyMatrix CyMatrix::Inverse() const noexcept {
  if (kind == MatTranslate || kind == MatRotate || kind == MatRigid) return RigidInverse();
  return InverseByKind();
}
