#pragma once

#include <cstddef>
#include <cstdint>

#include "compound/format.h"

/// The name of an element as the directory keeps it.
struct CompoundName {
  std::uint8_t length = 0;  // UTF-16 units
  char16_t units[MaxNameUnits] = {};
};

/// What a name may hold: New is valid text without / \ : ! and Existing is anything, as what others
/// have written has to be found again.
enum class NameRules : std::uint8_t { New, Existing };

/// Converts and checks a name: false when it is null, empty, longer than 31 units or against the
/// rules.
bool MakeName(const wchar_t* text, CompoundName* name, NameRules rules = NameRules::New);

/// The name as wide text with its closing zero; the result is the characters before that.
std::size_t Widen(const CompoundName& name, wchar_t (&text)[MaxNameUnits + 1]);

/// The format's order: shorter names first, then by upper-cased units. Negative, 0 or positive.
int CompareNames(const CompoundName& a, const CompoundName& b);

bool IsSameName(const CompoundName& a, const CompoundName& b);

/// A hash that is the same for the same names.
std::uint32_t HashOfName(const CompoundName& name);

/// The simple upper case of a UTF-16 unit beyond ASCII; the unit itself where it has none.
/// The same on every machine, whatever the locale.
char16_t UppercaseBeyondAscii(char16_t unit);

inline char16_t Uppercase(char16_t unit) {
  if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
  return UppercaseBeyondAscii(unit);
}
