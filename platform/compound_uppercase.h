#pragma once

/// The simple upper case of a UTF-16 unit beyond ASCII; the unit itself where it has none.
/// The same on every machine, whatever the locale.
char16_t UppercaseBeyondAscii(char16_t unit);

inline char16_t Uppercase(char16_t unit) {
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
  return UppercaseBeyondAscii(unit);
}
