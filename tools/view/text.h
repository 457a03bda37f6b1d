#pragma once

#include <string>
#include <string_view>

namespace kelview {

/// `number` with up to `digits` significant digits, the same in every locale; never "-0".
std::string NumberText(double number, int digits = 6);

/// `number` with up to `decimals` decimals (at most 6), trailing zeros left out; never "-0".
std::string FixedText(double number, int decimals);

/// `bytes` as UTF-8 that a browser and an XML reader take: a byte that belongs to no character
/// stands for the character of that number, and control characters become question marks.
std::string CleanText(std::string_view bytes);

/// `text` with what XML and HTML give a meaning to written as entities.
std::string EscapeMarkup(std::string_view text);

}  // namespace kelview
