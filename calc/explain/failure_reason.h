#pragma once

#include <string>

#include "calc/failure_observer.h"

namespace kelcalc {

/// Why a token failed, for a person: what it is, what stood on the stack, what it takes, what may
/// have been meant. The arguments are those of `CaFailureObserver::Failed`.
std::string FailureReason(const CaInterpreter& interpreter, CaFailure failure,
                          const std::string& name, const CaOperatorEntry* entry);

/// Why the end of the input cut off what is `within` it and began at the marked position.
std::string UnfinishedReason(const CaInterpreter& interpreter, CaUnfinished within);

/// The token at the marked position as it was typed, on one line, without what a terminal would
/// obey.
std::string TokenText(const CaInterpreter& interpreter);

/// Where the marked token of the input stands: "name:line:column: ".
std::string MarkedPlace(const CaInterpreter& interpreter);

}  // namespace kelcalc
