#pragma once

#include <string>
#include <string_view>

namespace kelcalc {

// The line editor works on characters, programs are made of bytes. A byte that is no character of
// the terminal stands in the editor as a character of Unicode's private use, so that none is lost.

/// Takes the first character of `bytes`, or the first byte where it begins none. Returns false
/// when more bytes are needed to tell.
bool TakeCharacter(std::string& bytes, wchar_t& character);

/// `bytes` as the editor holds them.
std::string EditedText(std::string_view bytes);

/// What was typed, from what the editor holds.
std::string TypedBytes(std::string_view text);

}  // namespace kelcalc
