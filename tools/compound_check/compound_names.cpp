#include "tools/compound_check/compound_names.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <clocale>
#include <cwctype>
#endif

#include <cstdint>
#include <cstdio>

namespace compound {
namespace {

/// The letters that the format orders otherwise than Unicode folds them: the dotless i is a letter
/// of its own, and of three pairs the small letter stands for both.
constexpr char16_t Otherwise[][2] = {{0x0131, 0x0131}, {0x023A, 0x2C65}, {0x2C65, 0x2C65},
                                     {0x023E, 0x2C66}, {0x2C66, 0x2C66}, {0x1FCC, 0x1FC3},
                                     {0x1FC3, 0x1FC3}};

// The tables are those of the system, so that this knows nothing of the one by which the files are
// written.
#ifdef _WIN32
char16_t SystemUpperCase(char16_t unit) {
  wchar_t upper = unit;
  const auto letter = static_cast<wchar_t>(unit);
  LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, &letter, 1, &upper, 1);
  return static_cast<char16_t>(upper);
}
#else
char16_t SystemUpperCase(char16_t unit) {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const std::wint_t upper = unicode == nullptr ? std::towupper(unit) : towupper_l(unit, unicode);
  return upper > 0xFFFF ? unit : static_cast<char16_t>(upper);
}
#endif

}  // namespace

char16_t UpperCase(char16_t unit) {
  for (const auto& [letter, upper] : Otherwise) {
    if (unit == letter) return upper;
  }
  return SystemUpperCase(unit);
}

int CompareNames(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (UpperCase(a[i]) != UpperCase(b[i])) return UpperCase(a[i]) - UpperCase(b[i]);
  }
  return 0;
}

std::string Utf8(std::u16string_view text) {
  std::string bytes;
  const auto tail = [&](std::uint32_t c, int shift) {
    bytes += static_cast<char>(0x80 | (c >> shift & 0x3F));
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t c = text[i];
    if ((c & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00) {
      c = 0x10000 + ((c & 0x3FF) << 10) + (text[++i] & 0x3FFU);
    }
    if (c < 0x80) {
      bytes += static_cast<char>(c);
    } else if (c < 0x800) {
      bytes += static_cast<char>(0xC0 | c >> 6);
      tail(c, 0);
    } else if (c < 0x10000) {
      bytes += static_cast<char>(0xE0 | c >> 12);
      tail(c, 6), tail(c, 0);
    } else {
      bytes += static_cast<char>(0xF0 | c >> 18);
      tail(c, 12), tail(c, 6), tail(c, 0);
    }
  }
  return bytes;
}

std::string Printable(std::u16string_view text) {
  std::string shown;
  for (const char c : Utf8(text)) {
    const unsigned byte = static_cast<unsigned char>(c);
    char escaped[8] = {c};
    if (byte < 0x20 || byte == 0x7F) std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
    shown += escaped;
  }
  return shown;
}

}  // namespace compound
