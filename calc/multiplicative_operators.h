#pragma once

struct CaInterpreter;

/// Products, remainders and quotients of the two top values.

int Product(CaInterpreter& interpreter);    // A B *
int Remainder(CaInterpreter& interpreter);  // A B %; of geometry the dot product
int Quotient(CaInterpreter& interpreter);   // A B /
