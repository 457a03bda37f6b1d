#include "calc/constructor_functions.h"

#include "calc/interpreter.h"
#include "calc/matrix_columns.h"
#include "calc/rules.h"

namespace {

/// A row for loose numbers: all operands are reals.
constexpr CaTopRule Loose(int operands, CaValue (*make)(CaOperands s)) {
  return {TypeReal, operands, TypeReal, make};
}

CyVector TopTriple(CaOperands s) { return {s[2]->real, s[1]->real, s[0]->real}; }

CaValue VectorOfReals(CaOperands s) { return CaValue(TypeVector, TopTriple(s)); }
CaValue VectorOfPoint(CaOperands s) { return CaValue(TypeVector, s[0]->point); }
CaValue VectorOfMatrix(CaOperands s) { return CaValue(TypeVector, Column(s[0]->matrix, 1)); }
CaValue VectorOfQuaternion(CaOperands s) { return CaValue(TypeVector, s[0]->quaternion.v); }
CaValue VectorOfRotation(CaOperands s) { return CaValue(TypeVector, s[0]->rotation.axis); }

CaValue PointOfReals(CaOperands s) { return CaValue(TypePoint, TopTriple(s)); }
CaValue PointOfVector(CaOperands s) { return CaValue(TypePoint, s[0]->vector); }
CaValue PointOfMatrix(CaOperands s) { return CaValue(TypePoint, Column(s[0]->matrix, 3)); }

/// Twelve numbers, row by row.
CaValue MatrixOfReals(CaOperands s) {
  CyMatrix matrix;
  matrix.SetTrans(s[8]->real, s[4]->real, s[0]->real);
  matrix.SetCol2(s[9]->real, s[5]->real, s[1]->real);
  matrix.SetCol1(s[10]->real, s[6]->real, s[2]->real);
  matrix.SetCol0(s[11]->real, s[7]->real, s[3]->real);
  return CaValue(matrix);
}

/// The three axes, x first, and the origin.
CaValue MatrixOfFrame(CaOperands s) {
  CyMatrix matrix;
  matrix.SetTrans(s[0]->point);
  matrix.SetCol2(s[1]->vector.x, s[1]->vector.y, s[1]->vector.z);
  matrix.SetCol1(s[2]->vector.x, s[2]->vector.y, s[2]->vector.z);
  matrix.SetCol0(s[3]->vector.x, s[3]->vector.y, s[3]->vector.z);
  return CaValue(matrix);
}

CaValue MatrixOfQuaternion(CaOperands s) {
  CyMatrix matrix;
  matrix.SetQuat(s[0]->quaternion);
  return CaValue(matrix);
}

CaValue MatrixOfRotation(CaOperands s) {
  CyMatrix matrix;
  matrix.SetRotation(s[0]->rotation);
  return CaValue(matrix);
}

CaValue MatrixOfScale(CaOperands s) {
  CyMatrix matrix;
  matrix.SetElem(0, 0, s[0]->scale.x);
  matrix.SetElem(1, 1, s[0]->scale.y);
  matrix.SetElem(2, 2, s[0]->scale.z);
  return CaValue(matrix);
}

CaValue QuaternionOfReals(CaOperands s) { return CaValue(CyQuaternion(s[3]->real, TopTriple(s))); }
CaValue QuaternionOfMatrix(CaOperands s) {
  CyQuaternion quaternion;
  quaternion.FromMatrix(s[0]->matrix);
  return CaValue(quaternion);
}
CaValue QuaternionOfRotation(CaOperands s) {
  CyQuaternion quaternion;
  quaternion.FromRotation(s[0]->rotation);
  return CaValue(quaternion);
}

CaValue RotationOfReals(CaOperands s) {
  return CaValue(CyRotation(CyVector(s[3]->real, s[2]->real, s[1]->real), s[0]->real));
}
CaValue RotationOfMatrix(CaOperands s) {
  CyRotation rotation;
  rotation.FromMatrix(s[0]->matrix);
  return CaValue(rotation);
}
CaValue RotationOfQuaternion(CaOperands s) {
  CyRotation rotation;
  rotation.FromQuaternion(s[0]->quaternion);
  return CaValue(rotation);
}

CaValue ScaleOfReals(CaOperands s) { return CaValue(TypeScale, TopTriple(s)); }

// Deliberate: one would expect the lengths of the axes; these are their squares. Held by the
// conversions in the function tests.
CaValue ScaleOfMatrix(CaOperands s) {
  const CyVector x = Column(s[0]->matrix, 0);
  const CyVector y = Column(s[0]->matrix, 1);
  const CyVector z = Column(s[0]->matrix, 2);
  return CaValue(TypeScale, CyVector(Dot(x, x), Dot(y, y), Dot(z, z)));
}

// Each table: what may be on top and what becomes of it. A type that is not named fails silently.

constexpr CaTopRule VectorRules[] = {
    Loose(3, VectorOfReals),
    Kept(TypeVector),
    Replaced(TypePoint, VectorOfPoint),
    Replaced(TypeMatrix, VectorOfMatrix),  // the image of the y axis
    Replaced(TypeQuaternion, VectorOfQuaternion),
    Replaced(TypeRotation, VectorOfRotation),
};

constexpr CaTopRule PointRules[] = {
    Loose(3, PointOfReals),
    Replaced(TypeVector, PointOfVector),
    Kept(TypePoint),
    Replaced(TypeMatrix, PointOfMatrix),
};

// Deliberate: a vector on top might be expected to become a matrix, too; it fails silently. Held
// by the type rules of ";m".
constexpr CaTopRule MatrixRules[] = {
    Loose(12, MatrixOfReals),
    {TypePoint, 4, TypeVector, MatrixOfFrame},
    Kept(TypeMatrix),
    Replaced(TypeQuaternion, MatrixOfQuaternion),
    Replaced(TypeRotation, MatrixOfRotation),
    Replaced(TypeScale, MatrixOfScale),
};

constexpr CaTopRule QuaternionRules[] = {
    Loose(4, QuaternionOfReals),
    Replaced(TypeMatrix, QuaternionOfMatrix),
    Kept(TypeQuaternion),
    Replaced(TypeRotation, QuaternionOfRotation),
};

constexpr CaTopRule RotationRules[] = {
    Loose(4, RotationOfReals),
    Replaced(TypeMatrix, RotationOfMatrix),
    Replaced(TypeQuaternion, RotationOfQuaternion),
    Kept(TypeRotation),
};

constexpr CaTopRule ScaleRules[] = {
    Loose(3, ScaleOfReals),
    Replaced(TypeMatrix, ScaleOfMatrix),
    Kept(TypeScale),
};

static_assert(NamesEachTypeOnce(VectorRules));
static_assert(NamesEachTypeOnce(PointRules));
static_assert(NamesEachTypeOnce(MatrixRules));
static_assert(NamesEachTypeOnce(QuaternionRules));
static_assert(NamesEachTypeOnce(RotationRules));
static_assert(NamesEachTypeOnce(ScaleRules));

}  // namespace

// An empty stack shows a value of type nothing, which no table names.

int MakeVector(CaInterpreter& interpreter) { return ApplyTopRules(interpreter, VectorRules, ";v"); }

int MakePoint(CaInterpreter& interpreter) { return ApplyTopRules(interpreter, PointRules, ";p"); }

int MakeMatrix(CaInterpreter& interpreter) { return ApplyTopRules(interpreter, MatrixRules, ";m"); }

int MakeQuaternion(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, QuaternionRules, ";q");
}

int MakeRotation(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, RotationRules, ";r");
}

int MakeScale(CaInterpreter& interpreter) { return ApplyTopRules(interpreter, ScaleRules, ";s"); }
