#pragma once

#include <algorithm>
#include <cmath>

#include "calc/dispatch.h"
#include "calc/interpreter.h"

/// Elementary functions of reals; angles are degrees. They fail silently on anything else.

namespace operators {

/// Factors between the two units of angles: the doubles nearest to pi/180 and 180/pi.
inline constexpr double DegreesToRadians = 0.017453292519943295;
inline constexpr double RadiansToDegrees = 57.29577951308232;

inline constexpr double Build = 16.0;

/// The one row of a function of a real.
template <double (*Function)(double)>
inline CaValue OfReal(CaOperands s) {
  const double result = Function(s[0]->real);
  return CaValue(result);
}

template <double (*Function)(double)>
inline constexpr CaTopRule RealRules[] = {Replaced(TypeReal, TypeReal, OfReal<Function>)};

/// A not-a-number stays one.
inline double Clamped(double cosine) { return std::clamp(cosine, -1.0, 1.0); }

inline double SineOf(double degrees) { return std::sin(degrees * DegreesToRadians); }
inline double CosineOf(double degrees) { return std::cos(degrees * DegreesToRadians); }
inline double TangentOf(double degrees) { return std::tan(degrees * DegreesToRadians); }
inline double ArcSineOf(double x) { return std::asin(Clamped(x)) * RadiansToDegrees; }
inline double ArcCosineOf(double x) { return std::acos(Clamped(x)) * RadiansToDegrees; }
inline double ArcTangentOf(double x) { return std::atan(x) * RadiansToDegrees; }
inline double LogarithmOf(double x) { return std::log(x); }
inline double ExponentialOf(double x) { return std::exp(x); }
inline double SquareRootOf(double x) { return std::sqrt(x); }

inline CaValue AngleOfCoordinates(const CaValue& y, const CaValue& x) {
  return CaValue(std::atan2(y.real, x.real) * RadiansToDegrees);
}

inline constexpr CaRule ArcTangent2Rules[] = {
    {TypeReal, TypeReal, AngleOfCoordinates, TypeReal},
    {AnyType, AnyType, Silent},
};
static_assert(CoversEveryPairOnce(ArcTangent2Rules));
inline constexpr CaRuleGrid ArcTangent2Grid(ArcTangent2Rules);

inline int PushBuild(CaInterpreter& interpreter) {
  interpreter.PushOwned(new CaValue(Build));
  return 1;
}

inline constexpr CaOperatorEntry Sine = {
    .name = "sin",
    .function = ApplyTopRules<Sine>,
    .sign = FunctionSign,
    .forms = RealRules<SineOf>,
    .help = {"sine of an angle in degrees", "30 ;sin #", " 0.500000\n"},
};

inline constexpr CaOperatorEntry Cosine = {
    .name = "cos",
    .function = ApplyTopRules<Cosine>,
    .sign = FunctionSign,
    .forms = RealRules<CosineOf>,
    .help = {"cosine of an angle in degrees", "60 ;cos #", " 0.500000\n"},
};

inline constexpr CaOperatorEntry Tangent = {
    .name = "tan",
    .function = ApplyTopRules<Tangent>,
    .sign = FunctionSign,
    .forms = RealRules<TangentOf>,
    .help = {"tangent of an angle in degrees", "45 ;tan #", " 1.000000\n"},
};

inline constexpr CaOperatorEntry ArcSine = {
    .name = "asin",
    .function = ApplyTopRules<ArcSine>,
    .sign = FunctionSign,
    .forms = RealRules<ArcSineOf>,
    .help = {"angle in degrees that has this sine", "0.5 ;asin #", " 30.000000\n"},
};

inline constexpr CaOperatorEntry ArcCosine = {
    .name = "acos",
    .function = ApplyTopRules<ArcCosine>,
    .sign = FunctionSign,
    .forms = RealRules<ArcCosineOf>,
    .help = {"angle in degrees that has this cosine", "0.5 ;acos #", " 60.000000\n"},
};

inline constexpr CaOperatorEntry ArcTangent = {
    .name = "atan",
    .function = ApplyTopRules<ArcTangent>,
    .sign = FunctionSign,
    .forms = RealRules<ArcTangentOf>,
    .help = {"angle in degrees that has this tangent", "1 ;atan #", " 45.000000\n"},
};

inline constexpr CaOperatorEntry ArcTangent2 = {
    .name = "atan2",
    .function = ApplyPairRules<ArcTangent2>,
    .sign = FunctionSign,
    .pairs = &ArcTangent2Grid,
    .help = {"angle in degrees of the direction with this y and, on top, this x", "1 -1 ;atan2 #",
             " 135.000000\n"},
};

inline constexpr CaOperatorEntry Logarithm = {
    .name = "ln",
    .function = ApplyTopRules<Logarithm>,
    .sign = FunctionSign,
    .forms = RealRules<LogarithmOf>,
    .help = {"natural logarithm", "1 ;exp ;ln #", " 1.000000\n"},
};

inline constexpr CaOperatorEntry Exponential = {
    .name = "exp",
    .function = ApplyTopRules<Exponential>,
    .sign = FunctionSign,
    .forms = RealRules<ExponentialOf>,
    .help = {"e raised to the number", "1 ;exp #", " 2.718282\n"},
};

inline constexpr CaOperatorEntry SquareRoot = {
    .name = "sqrt",
    .function = ApplyTopRules<SquareRoot>,
    .sign = FunctionSign,
    .forms = RealRules<SquareRootOf>,
    .help = {"square root", "2 ;sqrt #", " 1.414214\n"},
};

inline constexpr CaOperatorEntry BuildNumber = {
    .name = "build",
    .function = PushBuild,
    .sign = FunctionSign,
    .forms = Gives<TypeReal>,
    .help = {"push the build number", ";build #", " 16.000000\n"},
};

}  // namespace operators
