#pragma once

#include <cstdio>

struct CaInterpreter;

namespace kelcalc {

/// How values are shown to a person.
struct DisplayStyle {
  int digits = 10;      // significant ones
  bool colour = false;  // control sequences of a terminal may be written
};

/// Writes the top entries of the stack, the top last: position, type, value, and the name of a
/// variable. Long lines are cut at the width of the terminal as it is at this moment, where `to`
/// is one. Writes nothing for an empty stack.
void ShowStack(const CaInterpreter& interpreter, const DisplayStyle& style, std::FILE* to);

/// The same for all variables, the first that was defined first: name, type, value.
void ShowVariables(const CaInterpreter& interpreter, const DisplayStyle& style, std::FILE* to);

}  // namespace kelcalc
