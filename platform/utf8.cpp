#include "platform/utf8.h"

#ifndef _WIN32

#include <cstdint>

namespace {

constexpr std::uint32_t FirstKeptByte = 0xDC80;
constexpr std::uint32_t LastKeptByte = 0xDCFF;

/// One form of a character: how its first byte is recognised, how many bytes follow, and the least
/// value that needs the form.
struct Form {
  std::uint8_t mask;
  std::uint8_t lead;
  int following;
  std::uint32_t least;
};

constexpr Form Forms[] = {
    {0x80, 0x00, 0, 0x0}, {0xE0, 0xC0, 1, 0x80}, {0xF0, 0xE0, 2, 0x800}, {0xF8, 0xF0, 3, 0x10000}};

constexpr bool IsCharacter(std::uint32_t value) {
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

void Append(std::uint32_t character, std::string* utf8) {
  int form = 3;
  while (character < Forms[form].least) --form;
  *utf8 += static_cast<char>(Forms[form].lead | character >> (6 * Forms[form].following));
  for (int left = Forms[form].following; left-- > 0;) {
    *utf8 += static_cast<char>(0x80 | (character >> (6 * left) & 0x3F));
  }
}

}  // namespace

// The zero byte at the end continues no character, so nothing is read beyond it.
wchar_t TakeUtf8(const char*& text) {
  const auto byteAt = [text](int i) { return static_cast<std::uint8_t>(text[i]); };
  for (const Form& form : Forms) {
    if ((byteAt(0) & form.mask) != form.lead) continue;
    std::uint32_t value = byteAt(0) & static_cast<std::uint8_t>(~form.mask);
    int i = 1;
    while (i <= form.following && (byteAt(i) & 0xC0U) == 0x80U) {
      value = value << 6U | (byteAt(i++) & 0x3FU);
    }
    if (i <= form.following || value < form.least || !IsCharacter(value)) break;
    text += i;
    return static_cast<wchar_t>(value);
  }
  return static_cast<wchar_t>(0xDC00U + static_cast<std::uint8_t>(*text++));
}

bool ToUtf8(const wchar_t* text, std::string* utf8) {
  for (; *text != 0; ++text) {
    const auto character = static_cast<char32_t>(*text);
    if (character >= FirstKeptByte && character <= LastKeptByte) {
      *utf8 += static_cast<char>(character & 0xFFU);
    } else if (IsCharacter(character)) {
      Append(character, utf8);
    } else {
      return false;
    }
  }
  return true;
}

#endif
