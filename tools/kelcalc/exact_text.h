#pragma once

#include <string>

struct CaInterpreter;
class CaValue;

namespace kelcalc {

/// `value` as program text that pushes the same value: each number has the fewest digits that read
/// back as the same double, infinities and not-a-numbers included. `nameOfNothing` is a name that
/// has no value, for a value of type nothing. An integer comes back as a real.
std::string ExactText(const CaValue& value, const std::string& nameOfNothing);

/// A name that no variable has.
std::string FreeName(const CaInterpreter& interpreter);

/// Lets ;write keep values as `ExactText` tells.
void WriteExactly(CaInterpreter& interpreter);

/// A program that makes stack and variables what they are now, in the same order, when it runs
/// where there are none.
std::string ExactProgram(const CaInterpreter& interpreter);

}  // namespace kelcalc
