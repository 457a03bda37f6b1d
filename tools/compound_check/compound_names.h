#pragma once

/// Names in compound files: their order, and their text for people and command lines.

#include <string>
#include <string_view>

namespace compound {

/// The upper case of a code unit, as the format orders names.
char16_t UpperCase(char16_t unit);

/// The order of names in a storage: by length, then by upper-cased code units.
/// Negative, zero, positive.
int CompareNames(std::u16string_view a, std::u16string_view b);

/// UTF-8, for messages and for the command lines of other readers.
std::string Utf8(std::u16string_view text);

/// UTF-8 that a terminal shows as it is: control characters become \xNN.
std::string Printable(std::u16string_view text);

}  // namespace compound
