#pragma once

#include <cstddef>
#include <string>

namespace kelcalc {

/// What messages call the standard input.
inline constexpr const char* StandardInputName = "<stdin>";

/// What is there of the standard input, up to `size` bytes; of a terminal one line. 0 at the end,
/// the negative of an errno when reading fails. Hands on the output before it waits, and waits
/// where reading would not.
std::ptrdiff_t ReadStandardInput(char* block, std::size_t size);

/// Tells that the input that messages call `name` could not be read to its end; `reason` is an
/// errno. `InputFailed` answers true from now on.
void ReportUnreadInput(const std::string& name, int reason);

/// Whether that was ever told.
bool InputFailed();

}  // namespace kelcalc
