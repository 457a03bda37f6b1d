#pragma once

#include <vector>

#include "tools/kelcalc/options.h"

struct CaInterpreter;

namespace kelcalc {

/// Runs the programs of a command line in their order. Returns 0, or 1 when one could not be
/// opened; with `stop` it ends there, else it goes on with the next.
int RunPrograms(CaInterpreter& interpreter, const std::vector<Program>& programs, bool stop);

}  // namespace kelcalc
