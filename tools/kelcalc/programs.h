#pragma once

#include <kelcalc.h>
#include <string>
#include <vector>

#include "tools/kelcalc/options.h"

namespace kelcalc {

/// Runs the programs of a command line in their order. Returns 0, or 1 when one could not be
/// opened; with `stop` it ends there, else it goes on with the next.
int RunPrograms(kel::Calculator& calculator, const std::vector<Program>& programs, bool stop);

}  // namespace kelcalc
