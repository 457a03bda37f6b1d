#pragma once

#include <kelcalc.h>
#include <string>
#include <vector>

#include "tools/kelcalc/options.h"

struct CaInterpreter;

namespace kelcalc {

/// Runs the programs of a command line in their order. Returns 0, or 1 when one could not be
/// opened; with `stop` it ends there, else it goes on with the next.
int RunPrograms(kel::Calculator& calculator, const std::vector<Program>& programs, bool stop);

/// Runs the file of exactly this name, passing over a first line that begins with "#!". Returns 1,
/// or 0 after the message of the language when it cannot be opened.
int RunNamedFile(CaInterpreter& interpreter, const std::string& path);

}  // namespace kelcalc
