#pragma once

#include "calc/api/kelcalc.h"

class CaValue;

namespace kel {

/// The record that holds what `source` holds. What a matrix is known to be (its kind) stays behind.
Value FromEngine(const CaValue& source);

/// A value of the engine; a matrix is of the general kind, as one that a program writes.
CaValue ToEngine(const Value& value);

}  // namespace kel
