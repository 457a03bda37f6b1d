#pragma once

#include <string>
#include <string_view>

struct CaInterpreter;

namespace kelcalc {

/// What somebody who wrote the unknown operator or function `name` (without its ";") may have
/// meant, spelled as in a program: "$" for "abs", ";sqrt" for "sqr". Empty when nothing is near.
std::string NearOperator(std::string_view name);

/// The same for a name without a value: a variable, or the function of that name.
std::string NearVariable(std::string_view name, const CaInterpreter& interpreter);

/// ": did you mean X" for a suggestion; empty for none.
std::string Question(const std::string& suggestion);

}  // namespace kelcalc
