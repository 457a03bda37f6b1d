#pragma once

struct CaInterpreter;
class CaValue;

/// Compound constants: a letter and a list of numbers, as v(1, 2, 3). What stands between the
/// numbers is blanks, commas and comments; signs belong to the numbers.

/// Called with the "(" unread. Returns 1 with a new value that the caller owns, or 0 after a
/// report; then nothing is stored and whatever was consumed stays consumed.
using CompoundParser = int (*)(CaInterpreter& interpreter, CaValue*& value);

int ReadVector(CaInterpreter& interpreter, CaValue*& value);      // v(x, y, z)
int ReadPoint(CaInterpreter& interpreter, CaValue*& value);       // p(x, y, z)
int ReadMatrix(CaInterpreter& interpreter, CaValue*& value);      // m(three rows of four)
int ReadQuaternion(CaInterpreter& interpreter, CaValue*& value);  // q(w, x, y, z), as written
int ReadRotation(CaInterpreter& interpreter, CaValue*& value);    // r(x, y, z, degrees), as written
int ReadScale(CaInterpreter& interpreter, CaValue*& value);       // s(x, y, z)
