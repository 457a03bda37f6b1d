/// The elementary functions of the C library, for 32-bit Windows.
///
/// There every version of the system has others, and those of the compiler's run-time work in the
/// x87 registers: they differ in the last bit for up to 17 of 100 arguments. These take the
/// compiler's 113-bit functions and round once, which gives the nearest double for all but about
/// one argument in 2^60, and the same one on every machine. The C library of Linux differs from
/// them for at most 25 of 10000 arguments, by one unit in the last place.

#include <emmintrin.h>
#include <quadmath.h>

extern "C" {

double sin(double x) { return static_cast<double>(sinq(x)); }
double cos(double x) { return static_cast<double>(cosq(x)); }
double tan(double x) { return static_cast<double>(tanq(x)); }
double asin(double x) { return static_cast<double>(asinq(x)); }
double acos(double x) { return static_cast<double>(acosq(x)); }
double atan(double x) { return static_cast<double>(atanq(x)); }
double atan2(double y, double x) { return static_cast<double>(atan2q(y, x)); }
double exp(double x) { return static_cast<double>(expq(x)); }
double log(double x) { return static_cast<double>(logq(x)); }
double pow(double x, double y) { return static_cast<double>(powq(x, y)); }

/// What the compiler makes of a sine and a cosine of one argument.
void sincos(double x, double* sine, double* cosine) {
  *sine = sin(x);
  *cosine = cos(x);
}

/// The processor's own, which is exact to the last bit.
double sqrt(double x) {
  const __m128d value = _mm_set_sd(x);
  return _mm_cvtsd_f64(_mm_sqrt_sd(value, value));
}

}  // extern "C"
