#pragma once

#include <cstddef>

class CaCharacterSource;

namespace kelcalc {

/// The standard input as a source, which messages call "<stdin>". See `ReadStandardInput`.
CaCharacterSource& WatchedInput();

/// What is there, up to `size` bytes; of a terminal one line. 0 at the end, and when reading
/// fails: then a message tells why, and `InputFailed` answers true from now on. Hands on the
/// output before it waits, and waits where reading would not.
std::size_t ReadStandardInput(char* block, std::size_t size);

/// Tells that `name` could not be read to its end; `reason` is an errno.
void ReportUnreadInput(const char* name, int reason);

/// Whether that was ever told.
bool InputFailed();

}  // namespace kelcalc
