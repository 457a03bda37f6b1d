#pragma once

struct CaInterpreter;

/// A power of reals, and the rotation between two vectors. Both fail silently.

int Power(CaInterpreter& interpreter);            // base exponent ^
int RotationBetween(CaInterpreter& interpreter);  // from to @
