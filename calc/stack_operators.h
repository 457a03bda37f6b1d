#pragma once

struct CaInterpreter;

/// Operators that print, copy, drop, reorder and assign entries, and those that replace the top
/// value by another of its kind. What they push is always a plain value, never a variable. All
/// failures are silent.

int PrintTop(CaInterpreter& interpreter);          // #, pops it
int PrintAllAndClear(CaInterpreter& interpreter);  // ##, from the bottom up
int ShowTop(CaInterpreter& interpreter);           // ?, keeps it
int ShowAll(CaInterpreter& interpreter);           // ??
int Drop(CaInterpreter& interpreter);              // a single backslash
int DropAll(CaInterpreter& interpreter);           // two backslashes
int Duplicate(CaInterpreter& interpreter);         // '
int Pick(CaInterpreter& interpreter);              // index ''
int Swap(CaInterpreter& interpreter);              // |
int Assign(CaInterpreter& interpreter);            // value variable :
int ToRadians(CaInterpreter& interpreter);         // >>
int ToDegrees(CaInterpreter& interpreter);         // <<
int Magnitude(CaInterpreter& interpreter);         // $
int Negate(CaInterpreter& interpreter);            // ~
