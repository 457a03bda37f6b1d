#pragma once

struct CaInterpreter;

/// Sums and differences of the two top values. Integers and reals do not mix.

int Sum(CaInterpreter& interpreter);         // A B +
int Difference(CaInterpreter& interpreter);  // A B -
