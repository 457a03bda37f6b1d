#pragma once

#include <string>

struct CaInterpreter;

namespace kelcalc {

/// Stack (the top last) and variables (the first that was defined first) with their types, as
/// docs/state.schema.json tells: every number reads back as the same double; infinities and
/// not-a-numbers are the strings "inf", "-inf" and "nan"; a text that is not UTF-8 is an array of
/// its bytes.
std::string StateJson(const CaInterpreter& interpreter);

}  // namespace kelcalc
