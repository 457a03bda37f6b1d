#pragma once

struct CaInterpreter;

/// Functions that make a geometry value from loose reals or from a geometry value of another
/// type. A value that has the type already stays as it is. Loose operands of a wrong type are
/// reported; everything else fails silently.

int MakeVector(CaInterpreter& interpreter);      // x y z ;v
int MakePoint(CaInterpreter& interpreter);       // x y z ;p
int MakeMatrix(CaInterpreter& interpreter);      // 12 reals row by row, or 3 axes and a point ;m
int MakeQuaternion(CaInterpreter& interpreter);  // w x y z ;q
int MakeRotation(CaInterpreter& interpreter);    // x y z degrees ;r
int MakeScale(CaInterpreter& interpreter);       // x y z ;s
