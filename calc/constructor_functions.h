#pragma once

#include "calc/component_functions.h"
#include "calc/dispatch.h"

/// Functions that make a geometry value from loose reals or from a geometry value of another
/// type. A value that has the type already stays as it is. Loose operands of a wrong type are
/// reported; everything else fails silently.

namespace operators {

/// A row for loose numbers: all operands are reals.
constexpr CaTopRule Loose(int operands, CaType gives, CaValue (*make)(CaOperands s)) {
  return {TypeReal, operands, TypeReal, gives, make};
}

inline CyVector TopTriple(CaOperands s) { return {s[2]->real, s[1]->real, s[0]->real}; }

inline CaValue VectorOfReals(CaOperands s) { return CaValue(TypeVector, TopTriple(s)); }
inline CaValue VectorOfPoint(CaOperands s) { return CaValue(TypeVector, s[0]->point); }
inline CaValue VectorOfMatrix(CaOperands s) { return CaValue(TypeVector, Column(s[0]->matrix, 1)); }
inline CaValue VectorOfQuaternion(CaOperands s) { return CaValue(TypeVector, s[0]->quaternion.v); }
inline CaValue VectorOfRotation(CaOperands s) { return CaValue(TypeVector, s[0]->rotation.axis); }

inline CaValue PointOfReals(CaOperands s) { return CaValue(TypePoint, TopTriple(s)); }
inline CaValue PointOfVector(CaOperands s) { return CaValue(TypePoint, s[0]->vector); }
inline CaValue PointOfMatrix(CaOperands s) { return CaValue(TypePoint, Column(s[0]->matrix, 3)); }

/// Twelve numbers, row by row.
inline CaValue MatrixOfReals(CaOperands s) {
  CyMatrix matrix;
  matrix.SetTrans(s[8]->real, s[4]->real, s[0]->real);
  matrix.SetCol2(s[9]->real, s[5]->real, s[1]->real);
  matrix.SetCol1(s[10]->real, s[6]->real, s[2]->real);
  matrix.SetCol0(s[11]->real, s[7]->real, s[3]->real);
  return CaValue(matrix);
}

/// The three axes, x first, and the origin.
inline CaValue MatrixOfFrame(CaOperands s) {
  CyMatrix matrix;
  matrix.SetTrans(s[0]->point);
  matrix.SetCol2(s[1]->vector.x, s[1]->vector.y, s[1]->vector.z);
  matrix.SetCol1(s[2]->vector.x, s[2]->vector.y, s[2]->vector.z);
  matrix.SetCol0(s[3]->vector.x, s[3]->vector.y, s[3]->vector.z);
  return CaValue(matrix);
}

inline CaValue MatrixOfQuaternion(CaOperands s) {
  CyMatrix matrix;
  matrix.SetQuat(s[0]->quaternion);
  return CaValue(matrix);
}

inline CaValue MatrixOfRotation(CaOperands s) {
  CyMatrix matrix;
  matrix.SetRotation(s[0]->rotation);
  return CaValue(matrix);
}

inline CaValue MatrixOfScale(CaOperands s) {
  CyMatrix matrix;
  matrix.SetElem(0, 0, s[0]->scale.x);
  matrix.SetElem(1, 1, s[0]->scale.y);
  matrix.SetElem(2, 2, s[0]->scale.z);
  return CaValue(matrix);
}

inline CaValue QuaternionOfReals(CaOperands s) {
  return CaValue(CyQuaternion(s[3]->real, TopTriple(s)));
}
inline CaValue QuaternionOfMatrix(CaOperands s) {
  CyQuaternion quaternion;
  quaternion.FromMatrix(s[0]->matrix);
  return CaValue(quaternion);
}
inline CaValue QuaternionOfRotation(CaOperands s) {
  CyQuaternion quaternion;
  quaternion.FromRotation(s[0]->rotation);
  return CaValue(quaternion);
}

inline CaValue RotationOfReals(CaOperands s) {
  return CaValue(CyRotation(CyVector(s[3]->real, s[2]->real, s[1]->real), s[0]->real));
}
inline CaValue RotationOfMatrix(CaOperands s) {
  CyRotation rotation;
  rotation.FromMatrix(s[0]->matrix);
  return CaValue(rotation);
}
inline CaValue RotationOfQuaternion(CaOperands s) {
  CyRotation rotation;
  rotation.FromQuaternion(s[0]->quaternion);
  return CaValue(rotation);
}

inline CaValue ScaleOfReals(CaOperands s) { return CaValue(TypeScale, TopTriple(s)); }

// Deliberate: one would expect the lengths of the axes; these are their squares. Held by "Squared
// lengths of the columns" in functions.txt.
inline CaValue ScaleOfMatrix(CaOperands s) {
  const CyVector x = Column(s[0]->matrix, 0);
  const CyVector y = Column(s[0]->matrix, 1);
  const CyVector z = Column(s[0]->matrix, 2);
  return CaValue(TypeScale, CyVector(Dot(x, x), Dot(y, y), Dot(z, z)));
}

// Each table: what may be on top and what becomes of it. A type that is not named fails silently.

inline constexpr CaTopRule VectorRules[] = {
    Loose(3, TypeVector, VectorOfReals),
    Kept(TypeVector),
    Replaced(TypePoint, TypeVector, VectorOfPoint),
    Replaced(TypeMatrix, TypeVector, VectorOfMatrix),  // the image of the y axis
    Replaced(TypeQuaternion, TypeVector, VectorOfQuaternion),
    Replaced(TypeRotation, TypeVector, VectorOfRotation),
};

inline constexpr CaTopRule PointRules[] = {
    Loose(3, TypePoint, PointOfReals),
    Replaced(TypeVector, TypePoint, PointOfVector),
    Kept(TypePoint),
    Replaced(TypeMatrix, TypePoint, PointOfMatrix),
};

// Deliberate: a vector on top might be expected to become a matrix, too; it fails silently. Held by
// OfTheLanguagePageIsMadeFromTheTables in reference_test.cpp.
inline constexpr CaTopRule MatrixRules[] = {
    Loose(12, TypeMatrix, MatrixOfReals),
    {TypePoint, 4, TypeVector, TypeMatrix, MatrixOfFrame},
    Kept(TypeMatrix),
    Replaced(TypeQuaternion, TypeMatrix, MatrixOfQuaternion),
    Replaced(TypeRotation, TypeMatrix, MatrixOfRotation),
    Replaced(TypeScale, TypeMatrix, MatrixOfScale),
};

inline constexpr CaTopRule QuaternionRules[] = {
    Loose(4, TypeQuaternion, QuaternionOfReals),
    Replaced(TypeMatrix, TypeQuaternion, QuaternionOfMatrix),
    Kept(TypeQuaternion),
    Replaced(TypeRotation, TypeQuaternion, QuaternionOfRotation),
};

inline constexpr CaTopRule RotationRules[] = {
    Loose(4, TypeRotation, RotationOfReals),
    Replaced(TypeMatrix, TypeRotation, RotationOfMatrix),
    Replaced(TypeQuaternion, TypeRotation, RotationOfQuaternion),
    Kept(TypeRotation),
};

inline constexpr CaTopRule ScaleRules[] = {
    Loose(3, TypeScale, ScaleOfReals),
    Replaced(TypeMatrix, TypeScale, ScaleOfMatrix),
    Kept(TypeScale),
};

inline constexpr CaOperatorEntry MakeVector = {
    .name = "v",
    .function = ApplyTopRules<MakeVector>,
    .sign = FunctionSign,
    .forms = VectorRules,
    .help = {"make a vector", "1 2 3 ;v #", " v(1.000000, 2.000000, 3.000000)\n"},
};

inline constexpr CaOperatorEntry MakePoint = {
    .name = "p",
    .function = ApplyTopRules<MakePoint>,
    .sign = FunctionSign,
    .forms = PointRules,
    .help = {"make a point", "1 2 3 ;p #", " p(1.000000, 2.000000, 3.000000)\n"},
};

inline constexpr CaOperatorEntry MakeMatrix = {
    .name = "m",
    .function = ApplyTopRules<MakeMatrix>,
    .sign = FunctionSign,
    .forms = MatrixRules,
    .help = {"make a matrix from twelve numbers, row by row; from three columns and a point; "
             "or from another value",
             "s(2,3,4) ;m #",
             " m(     2.000,     0.000,     0.000,     0.000\n"
             "        0.000,     3.000,     0.000,     0.000\n"
             "        0.000,     0.000,     4.000,     0.000)\n"},
};

inline constexpr CaOperatorEntry MakeQuaternion = {
    .name = "q",
    .function = ApplyTopRules<MakeQuaternion>,
    .sign = FunctionSign,
    .forms = QuaternionRules,
    .help = {"make a quaternion, the scalar part first", "r(0,0,1,180) ;q #",
             " q(0.000000,   0.000000, 0.000000, 1.000000)\n"},
};

inline constexpr CaOperatorEntry MakeRotation = {
    .name = "r",
    .function = ApplyTopRules<MakeRotation>,
    .sign = FunctionSign,
    .forms = RotationRules,
    .help = {"make a rotation from an axis and an angle in degrees", "0 0 2 90 ;r #",
             " r(0.000000, 0.000000, 2.000000,   90.000000)\n"},
};

inline constexpr CaOperatorEntry MakeScale = {
    .name = "s",
    .function = ApplyTopRules<MakeScale>,
    .sign = FunctionSign,
    .forms = ScaleRules,
    .help = {"make a scale; of a matrix, the squared lengths of its columns", "s(2,3,4) ;m ;s #",
             " s(4.000000, 9.000000, 16.000000)\n"},
};

}  // namespace operators
