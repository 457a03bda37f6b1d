#pragma once

struct CaInterpreter;

/// Elementary functions of reals; angles are degrees. They fail silently on anything else.

int Sine(CaInterpreter& interpreter);         // ;sin
int Cosine(CaInterpreter& interpreter);       // ;cos
int Tangent(CaInterpreter& interpreter);      // ;tan
int ArcSine(CaInterpreter& interpreter);      // ;asin, of the operand clamped to -1 to 1
int ArcCosine(CaInterpreter& interpreter);    // ;acos, likewise
int ArcTangent(CaInterpreter& interpreter);   // ;atan
int ArcTangent2(CaInterpreter& interpreter);  // y x ;atan2
int Logarithm(CaInterpreter& interpreter);    // ;ln
int Exponential(CaInterpreter& interpreter);  // ;exp
int SquareRoot(CaInterpreter& interpreter);   // ;sqrt
int BuildNumber(CaInterpreter& interpreter);  // ;build, the real 16
