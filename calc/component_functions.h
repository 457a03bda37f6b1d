#pragma once

#include <cmath>

#include "calc/dispatch.h"

/// Functions that replace the geometry value on top by one of its parts. A part that is asked of
/// itself stays as it is; everything without a rule fails silently.

namespace operators {

/// Column 0, 1 or 2 of `matrix`, the image of an axis; column 3 is the translation.
inline CyVector Column(const CyMatrix& matrix, int column) {
  return {matrix.m[0][column], matrix.m[1][column], matrix.m[2][column]};
}

inline CaValue Translation(CaOperands s) { return CaValue(TypePoint, Column(s[0]->matrix, 3)); }
inline CaValue FirstAxis(CaOperands s) { return CaValue(TypeVector, Column(s[0]->matrix, 0)); }
inline CaValue ThirdAxis(CaOperands s) { return CaValue(TypeVector, Column(s[0]->matrix, 2)); }

template <double CyVector::*Component>
inline CaValue OfVector(CaOperands s) {
  const double coordinate = s[0]->vector.*Component;
  return CaValue(coordinate);
}
template <double CyVector::*Component>
inline CaValue OfPoint(CaOperands s) {
  const double coordinate = s[0]->point.*Component;
  return CaValue(coordinate);
}

inline CaValue Length(CaOperands s) { return CaValue(s[0]->vector.Mag()); }
inline CaValue Distance(CaOperands s) { return CaValue(std::sqrt(DistSq(s[0]->point, Origin))); }
inline CaValue ScalarPart(CaOperands s) { return CaValue(s[0]->quaternion.w); }
inline CaValue Angle(CaOperands s) { return CaValue(s[0]->rotation.angle); }

inline constexpr CaTopRule TranslationRules[] = {
    Kept(TypePoint),
    Replaced(TypeMatrix, TypePoint, Translation),
};

inline constexpr CaTopRule FirstAxisRules[] = {
    Kept(TypeVector),
    Replaced(TypeMatrix, TypeVector, FirstAxis),
};

inline constexpr CaTopRule ThirdAxisRules[] = {
    Kept(TypeVector),
    Replaced(TypeMatrix, TypeVector, ThirdAxis),
};

template <double CyVector::*Component>
inline constexpr CaTopRule CoordinateRules[] = {
    Replaced(TypeVector, TypeReal, OfVector<Component>),
    Replaced(TypePoint, TypeReal, OfPoint<Component>),
};

inline constexpr CaTopRule MeasureRules[] = {
    Kept(TypeReal),
    Replaced(TypeVector, TypeReal, Length),
    Replaced(TypePoint, TypeReal, Distance),
    Replaced(TypeQuaternion, TypeReal, ScalarPart),
    Replaced(TypeRotation, TypeReal, Angle),
};

inline constexpr CaTopRule AngleRules[] = {
    Replaced(TypeRotation, TypeReal, Angle),
};

inline constexpr CaOperatorEntry TranslationOf = {
    .name = "t",
    .function = ApplyTopRules<TranslationOf>,
    .sign = FunctionSign,
    .forms = TranslationRules,
    .help = {"translation of a matrix", "m(1,0,0,5, 0,1,0,6, 0,0,1,7) ;t #",
             " p(5.000000, 6.000000, 7.000000)\n"},
};

inline constexpr CaOperatorEntry FirstAxisOf = {
    .name = "u",
    .function = ApplyTopRules<FirstAxisOf>,
    .sign = FunctionSign,
    .forms = FirstAxisRules,
    .help = {"first column of a matrix", "s(2,3,4) ;m ;u #", " v(2.000000, 0.000000, 0.000000)\n"},
};

inline constexpr CaOperatorEntry ThirdAxisOf = {
    .name = "n",
    .function = ApplyTopRules<ThirdAxisOf>,
    .sign = FunctionSign,
    .forms = ThirdAxisRules,
    .help = {"third column of a matrix", "s(2,3,4) ;m ;n #", " v(0.000000, 0.000000, 4.000000)\n"},
};

inline constexpr CaOperatorEntry XOf = {
    .name = "x",
    .function = ApplyTopRules<XOf>,
    .sign = FunctionSign,
    .forms = CoordinateRules<&CyVector::x>,
    .help = {"x component", "p(1,2,3) ;x #", " 1.000000\n"},
};

inline constexpr CaOperatorEntry YOf = {
    .name = "y",
    .function = ApplyTopRules<YOf>,
    .sign = FunctionSign,
    .forms = CoordinateRules<&CyVector::y>,
    .help = {"y component", "p(1,2,3) ;y #", " 2.000000\n"},
};

inline constexpr CaOperatorEntry ZOf = {
    .name = "z",
    .function = ApplyTopRules<ZOf>,
    .sign = FunctionSign,
    .forms = CoordinateRules<&CyVector::z>,
    .help = {"z component", "p(1,2,3) ;z #", " 3.000000\n"},
};

inline constexpr CaOperatorEntry MeasureOf = {
    .name = "w",
    .function = ApplyTopRules<MeasureOf>,
    .sign = FunctionSign,
    .forms = MeasureRules,
    .help = {"length, distance from the origin, scalar part or angle", "v(3,0,4) ;w #",
             " 5.000000\n"},
};

inline constexpr CaOperatorEntry AngleOf = {
    .name = "a",
    .function = ApplyTopRules<AngleOf>,
    .sign = FunctionSign,
    .forms = AngleRules,
    .help = {"angle of a rotation in degrees", "r(0,0,1,90) ;a #", " 90.000000\n"},
};

}  // namespace operators
