#include "calc/scalar_functions.h"

#include <algorithm>
#include <cmath>

#include "calc/angles.h"
#include "calc/interpreter.h"
#include "calc/rules.h"

namespace {

constexpr double Build = 16.0;

/// The one row of a function of a real.
template <double (*Function)(double)>
CaValue OfReal(CaOperands s) {
  const double result = Function(s[0]->real);
  return CaValue(result);
}

template <double (*Function)(double)>
int ApplyToReal(CaInterpreter& interpreter) {
  static constexpr CaTopRule Rules[] = {Replaced(TypeReal, OfReal<Function>)};
  return ApplyTopRules(interpreter, Rules, "");
}

/// A not-a-number stays one.
double Clamped(double cosine) { return std::clamp(cosine, -1.0, 1.0); }

double SineOf(double degrees) { return std::sin(degrees * DegreesToRadians); }
double CosineOf(double degrees) { return std::cos(degrees * DegreesToRadians); }
double TangentOf(double degrees) { return std::tan(degrees * DegreesToRadians); }
double ArcSineOf(double x) { return std::asin(Clamped(x)) * RadiansToDegrees; }
double ArcCosineOf(double x) { return std::acos(Clamped(x)) * RadiansToDegrees; }
double ArcTangentOf(double x) { return std::atan(x) * RadiansToDegrees; }
double LogarithmOf(double x) { return std::log(x); }
double ExponentialOf(double x) { return std::exp(x); }
double SquareRootOf(double x) { return std::sqrt(x); }

CaValue AngleOfCoordinates(const CaValue& y, const CaValue& x) {
  return CaValue(std::atan2(y.real, x.real) * RadiansToDegrees);
}

constexpr CaRule ArcTangent2Rules[] = {
    {TypeReal, TypeReal, AngleOfCoordinates},
    {AnyType, AnyType, Silent},
};
static_assert(CoversEveryPairOnce(ArcTangent2Rules));
constexpr CaRuleGrid ArcTangent2Grid(ArcTangent2Rules);

}  // namespace

int Sine(CaInterpreter& interpreter) { return ApplyToReal<SineOf>(interpreter); }
int Cosine(CaInterpreter& interpreter) { return ApplyToReal<CosineOf>(interpreter); }
int Tangent(CaInterpreter& interpreter) { return ApplyToReal<TangentOf>(interpreter); }
int ArcSine(CaInterpreter& interpreter) { return ApplyToReal<ArcSineOf>(interpreter); }
int ArcCosine(CaInterpreter& interpreter) { return ApplyToReal<ArcCosineOf>(interpreter); }
int ArcTangent(CaInterpreter& interpreter) { return ApplyToReal<ArcTangentOf>(interpreter); }
int Logarithm(CaInterpreter& interpreter) { return ApplyToReal<LogarithmOf>(interpreter); }
int Exponential(CaInterpreter& interpreter) { return ApplyToReal<ExponentialOf>(interpreter); }
int SquareRoot(CaInterpreter& interpreter) { return ApplyToReal<SquareRootOf>(interpreter); }

int ArcTangent2(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  return ApplyRules(interpreter, ArcTangent2Grid, ";atan2");
}

int BuildNumber(CaInterpreter& interpreter) {
  interpreter.PushOwned(new CaValue(Build));
  return 1;
}
