#include "tools/compound_check/compound_names.h"

#include <cstdint>

namespace compound {
namespace {

// clang-format off
struct UpperRange { char16_t first; char16_t last; int step; int delta; };
constexpr UpperRange UpperRanges[] = {
    {0x0061, 0x007A, 1, -32}, {0x00E0, 0x00F6, 1, -32}, {0x00F8, 0x00FE, 1, -32},
    {0x00FF, 0x00FF, 1, 121}, {0x0101, 0x012F, 2, -1},  {0x0133, 0x0137, 2, -1},
    {0x013A, 0x0148, 2, -1},  {0x014B, 0x0177, 2, -1},  {0x017A, 0x017E, 2, -1},
    {0x03AC, 0x03AC, 1, -38}, {0x03AD, 0x03AF, 1, -37}, {0x03B1, 0x03C1, 1, -32},
    {0x03C2, 0x03C2, 1, -31}, {0x03C3, 0x03CB, 1, -32}, {0x03CC, 0x03CC, 1, -64},
    {0x03CD, 0x03CE, 1, -63}, {0x0430, 0x044F, 1, -32}, {0x0450, 0x045F, 1, -80},
    {0x0461, 0x0481, 2, -1},  {0x048B, 0x04BF, 2, -1},  {0x04C2, 0x04CE, 2, -1},
    {0x04D1, 0x0513, 2, -1},  {0x0561, 0x0586, 1, -48},
};
// clang-format on

int Upper(char16_t unit) {
  for (const UpperRange& range : UpperRanges) {
    if (unit >= range.first && unit <= range.last && (unit - range.first) % range.step == 0) {
      return unit + range.delta;
    }
  }
  return unit;
}

}  // namespace

int CompareNames(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (Upper(a[i]) != Upper(b[i])) return Upper(a[i]) - Upper(b[i]);
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

}  // namespace compound
