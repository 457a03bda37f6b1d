#pragma once

/// Names in compound files: their order, and their text for people and command lines.

#include <string>
#include <string_view>

namespace compound {

/// The order of names in a storage: by length, then by upper-cased code units.
/// Negative, zero, positive. Covers Latin (-1 and Extended-A), Greek, Cyrillic and Armenian.
int CompareNames(std::u16string_view a, std::u16string_view b);

/// UTF-8, for messages and for the command lines of other readers.
std::string Utf8(std::u16string_view text);

}  // namespace compound
