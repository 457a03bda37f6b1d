#pragma once

struct CaInterpreter;

/// Functions that replace the geometry value on top by one of its parts. A part that is asked of
/// itself stays as it is; everything without a rule fails silently.

int TranslationOf(CaInterpreter& interpreter);  // ;t of a matrix, as a point
int FirstAxisOf(CaInterpreter& interpreter);    // ;u, column 0 of a matrix as a vector
int ThirdAxisOf(CaInterpreter& interpreter);    // ;n, column 2 of a matrix as a vector
int XOf(CaInterpreter& interpreter);            // ;x of a vector or a point
int YOf(CaInterpreter& interpreter);            // ;y
int ZOf(CaInterpreter& interpreter);            // ;z
int MeasureOf(CaInterpreter& interpreter);      // ;w: length, distance, scalar part or degrees
int AngleOf(CaInterpreter& interpreter);        // ;a of a rotation, in degrees
