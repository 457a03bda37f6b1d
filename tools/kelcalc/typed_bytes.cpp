#include "tools/kelcalc/typed_bytes.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>

namespace kelcalc {
namespace {

constexpr wchar_t FirstPrivate = 0xF700;  // plus the byte, which is above 7F

// U+F780 to U+F7FF in UTF-8: EF, then 9E or 9F, then the six low bits.
constexpr char Lead = '\xEF';
constexpr unsigned SecondOf80 = 0x9E;

constexpr std::size_t Invalid = static_cast<std::size_t>(-1);
constexpr std::size_t Unfinished = static_cast<std::size_t>(-2);

bool StandsForByte(wchar_t character) {
  return character >= FirstPrivate + 0x80 && character <= FirstPrivate + 0xFF;
}

}  // namespace

bool TakeCharacter(std::string& bytes, wchar_t& character) {
  if (bytes.empty()) return false;
  std::mbstate_t state{};
  std::size_t used = std::mbrtowc(&character, bytes.data(), bytes.size(), &state);
  if (used == Unfinished) return false;
  // A typed character of that private use goes byte by byte as well, and so comes back.
  if (used == Invalid || StandsForByte(character)) {
    character = FirstPrivate + static_cast<wchar_t>(static_cast<unsigned char>(bytes.front()));
    used = 1;
  }
  bytes.erase(0, std::max<std::size_t>(used, 1));
  return true;
}

std::string EditedText(std::string_view bytes) {
  std::string rest(bytes);
  std::string text;
  while (!rest.empty()) {
    const std::string before = rest;
    wchar_t character = 0;
    const bool whole = TakeCharacter(rest, character);
    if (whole && !StandsForByte(character)) {
      text.append(before, 0, before.size() - rest.size());
      continue;
    }
    const auto byte = static_cast<unsigned char>(before.front());
    text += {Lead, static_cast<char>(SecondOf80 + ((byte >> 6) & 1U)),
             static_cast<char>(0x80U | (byte & 0x3FU))};
    if (!whole) rest.erase(0, 1);
  }
  return text;
}

std::string TypedBytes(std::string_view text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const unsigned second = at + 2 < text.size() ? static_cast<unsigned char>(text[at + 1]) : 0;
    if (text[at] == Lead && (second & ~1U) == SecondOf80) {
      const unsigned low = static_cast<unsigned char>(text[at + 2]) & 0x3FU;
      bytes += static_cast<char>(0x80U | ((second & 1U) << 6) | low);
      at += 2;
    } else {
      bytes += text[at];
    }
  }
  return bytes;
}

}  // namespace kelcalc
