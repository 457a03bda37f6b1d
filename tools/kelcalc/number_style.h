#pragma once

#include <string>
#include <vector>

struct CaInterpreter;
class CaValue;

namespace kelcalc {

/// One significant digit is the fewest that mean something; 17 tell any two doubles apart.
constexpr int FewestDigits = 1;
constexpr int MostDigits = 17;

/// `value` in the notation that the reader takes, without the leading blank and the newline of
/// the language's own print form; empty for a value of type nothing. Each number has at most
/// `digits` significant digits (`FewestDigits` to `MostDigits`), trailing zeros left out; the
/// columns of a matrix are aligned, one row a line.
std::string ValueText(const CaValue& value, int digits);

/// The letter that begins a constant of `type`; 0 for types without one.
char CompoundLetter(int type);

/// The numbers of a real or of a constant in the order in which they are written; of a matrix row
/// by row. None for other types.
std::vector<double> NumbersIn(const CaValue& value);

/// Lets programs print numbers with at most `digits` significant digits. Files of variables and
/// the language's own form of values are not touched.
void SetShownDigits(CaInterpreter& interpreter, int digits);

}  // namespace kelcalc
