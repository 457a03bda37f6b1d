#include "calc/component_functions.h"

#include <cmath>

#include "calc/interpreter.h"
#include "calc/matrix_columns.h"
#include "calc/rules.h"

namespace {

CaValue Translation(CaOperands s) { return CaValue(TypePoint, Column(s[0]->matrix, 3)); }
CaValue FirstAxis(CaOperands s) { return CaValue(TypeVector, Column(s[0]->matrix, 0)); }
CaValue ThirdAxis(CaOperands s) { return CaValue(TypeVector, Column(s[0]->matrix, 2)); }

template <double CyVector::*Component>
CaValue OfVector(CaOperands s) {
  const double coordinate = s[0]->vector.*Component;
  return CaValue(coordinate);
}
template <double CyVector::*Component>
CaValue OfPoint(CaOperands s) {
  const double coordinate = s[0]->point.*Component;
  return CaValue(coordinate);
}

CaValue Length(CaOperands s) { return CaValue(s[0]->vector.Mag()); }
CaValue Distance(CaOperands s) { return CaValue(std::sqrt(DistSq(s[0]->point, Origin))); }
CaValue ScalarPart(CaOperands s) { return CaValue(s[0]->quaternion.w); }
CaValue Angle(CaOperands s) { return CaValue(s[0]->rotation.angle); }

constexpr CaTopRule TranslationRules[] = {
    Kept(TypePoint),
    Replaced(TypeMatrix, Translation),
};

constexpr CaTopRule FirstAxisRules[] = {
    Kept(TypeVector),
    Replaced(TypeMatrix, FirstAxis),
};

constexpr CaTopRule ThirdAxisRules[] = {
    Kept(TypeVector),
    Replaced(TypeMatrix, ThirdAxis),
};

template <double CyVector::*Component>
constexpr CaTopRule CoordinateRules[] = {
    Replaced(TypeVector, OfVector<Component>),
    Replaced(TypePoint, OfPoint<Component>),
};

constexpr CaTopRule MeasureRules[] = {
    Kept(TypeReal),
    Replaced(TypeVector, Length),
    Replaced(TypePoint, Distance),
    Replaced(TypeQuaternion, ScalarPart),
    Replaced(TypeRotation, Angle),
};

constexpr CaTopRule AngleRules[] = {
    Replaced(TypeRotation, Angle),
};

static_assert(NamesEachTypeOnce(TranslationRules));
static_assert(NamesEachTypeOnce(FirstAxisRules));
static_assert(NamesEachTypeOnce(ThirdAxisRules));
static_assert(NamesEachTypeOnce(CoordinateRules<&CyVector::x>));
static_assert(NamesEachTypeOnce(MeasureRules));
static_assert(NamesEachTypeOnce(AngleRules));

}  // namespace

// An empty stack shows a value of type nothing, which no table names.

int TranslationOf(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, TranslationRules, ";t");
}

int FirstAxisOf(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, FirstAxisRules, ";u");
}

int ThirdAxisOf(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, ThirdAxisRules, ";n");
}

int XOf(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, CoordinateRules<&CyVector::x>, ";x");
}

int YOf(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, CoordinateRules<&CyVector::y>, ";y");
}

int ZOf(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, CoordinateRules<&CyVector::z>, ";z");
}

int MeasureOf(CaInterpreter& interpreter) { return ApplyTopRules(interpreter, MeasureRules, ";w"); }

int AngleOf(CaInterpreter& interpreter) { return ApplyTopRules(interpreter, AngleRules, ";a"); }
