#pragma once

#include <cstddef>

class CaCharacterSource;

/// Numbers as text. Neither direction looks at the locale.

/// Reads digits with an optional point and fraction and an optional exponent ("e" or "E", an
/// optional sign, digits), with at least one digit before the exponent. Takes the longest run of
/// bytes that a number can begin with; the byte behind it stays unread. Only decimal: no
/// hexadecimal, no infinities.
///
/// Returns false, with what was taken gone, when that run is no number: "." or "1e+". Too large
/// a number reads as an infinity, too small a one as zero.
bool ReadUnsigned(CaCharacterSource& source, double& number);

/// The same with an optional sign before it; a sign alone is taken and is no number.
bool ReadSigned(CaCharacterSource& source, double& number);

/// No fixed-point number is longer: a sign, 309 digits, a point and 6 more.
constexpr std::size_t LongestFixed = 320;

/// Writes `number` with `decimals` (3 or 6) behind the point, padded with blanks on the left
/// to `width`, as the standard "%*.*f" does in the "C" locale ("inf", "-inf", "nan", "-nan").
/// `to` has room for `LongestFixed` characters; returns the end of what was written.
char* WriteFixed(char* to, double number, int decimals, int width);
