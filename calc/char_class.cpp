#include "calc/char_class.h"

#include <cstddef>

namespace {

struct ByteRange {
  std::uint8_t first;
  std::uint8_t last;
  CaCharBit bit;
};

// clang-format off
constexpr ByteRange Ranges[] = {
    // Every control character, the space, the comma, DEL, and what Latin-1 leaves undefined.
    {0x01, 0x20, BlankChar}, {0x2C, 0x2C, BlankChar}, {0x7F, 0xA0, BlankChar},
    // Digits, letters, the underscore, and most letters of Latin-1.
    {'0', '9', NameChar}, {'A', 'Z', NameChar}, {'_', '_', NameChar}, {'a', 'z', NameChar},
    {0xA7, 0xA7, NameChar}, {0xB7, 0xB7, NameChar},
    {0xBF, 0xD5, NameChar}, {0xD7, 0xF5, NameChar}, {0xF7, 0xFE, NameChar},
    // Everything else that is printed.
    {'!', '!', OpChar}, {'#', '\'', OpChar}, {'*', '+', OpChar}, {'-', '-', OpChar},
    {'/', '/', OpChar}, {':', ':', OpChar}, {'<', '@', OpChar}, {'\\', '\\', OpChar},
    {'^', '^', OpChar}, {'`', '`', OpChar}, {'{', '~', OpChar},
    {0xA1, 0xA6, OpChar}, {0xA8, 0xB6, OpChar}, {0xB8, 0xBE, OpChar},
    // Deliberate: one would expect the multiplication and division signs, D7 and F7, as operator
    // characters. Their left neighbours are, two letters, and the signs are name characters.
    {0xD6, 0xD6, OpChar}, {0xF6, 0xF6, OpChar},
};
// clang-format on

constexpr bool RangesOverlap() {
  std::array<int, 256> uses{};
  for (const ByteRange& range : Ranges) {
    for (std::size_t byte = range.first; byte <= range.last; ++byte) {
      if (++uses[byte] > 1) return true;
    }
  }
  return false;
}
static_assert(!RangesOverlap());

constexpr std::array<std::uint8_t, 256> ClassesFromRanges() {
  std::array<std::uint8_t, 256> classes{};
  for (const ByteRange& range : Ranges) {
    for (std::size_t byte = range.first; byte <= range.last; ++byte) classes[byte] = range.bit;
  }
  return classes;
}

struct TokenRange {
  unsigned char first;
  unsigned char last;
  CaTokenStart start;
};

// The bytes whose class does not tell alone. The rest of the name characters begins nothing, nor do
// blanks above 7F, which people take for signs.
constexpr TokenRange TokenRanges[] = {
    {'0', '9', CaTokenStart::Number},
    {'.', '.', CaTokenStart::Number},
    {'A', 'Z', CaTokenStart::Name},
    {'a', 'z', CaTokenStart::Name},
    {'-', '-', CaTokenStart::Minus},
    {';', ';', CaTokenStart::Function},
    {'"', '"', CaTokenStart::String},
    {'[', '[', CaTokenStart::Comment},
    {EndOfTransmission, EndOfTransmission, CaTokenStart::End},
};

constexpr std::array<CaTokenStart, 256> StartsFrom(const std::array<std::uint8_t, 256>& classes) {
  std::array<CaTokenStart, 256> starts{};
  for (std::size_t byte = 0; byte < starts.size(); ++byte) {
    if (classes[byte] == BlankChar && byte < 0x80) starts[byte] = CaTokenStart::Blank;
    if (classes[byte] == OpChar) starts[byte] = CaTokenStart::Operator;
  }
  for (const TokenRange& range : TokenRanges) {
    for (std::size_t byte = range.first; byte <= range.last; ++byte) starts[byte] = range.start;
  }
  return starts;
}

constexpr int CountWithout(const std::array<std::uint8_t, 256>& classes) {
  int count = 0;
  for (const std::uint8_t entry : classes) count += entry == 0 ? 1 : 0;
  return count;
}

}  // namespace

constexpr std::array<std::uint8_t, 256> CaCharClass = ClassesFromRanges();

constexpr std::array<CaTokenStart, 256> CaTokenStarts = StartsFrom(CaCharClass);

// Nine bytes have no class: NUL " ( ) . ; [ ] and FF.
static_assert(CountWithout(CaCharClass) == 9);
static_assert((CaCharClass[0x00] | CaCharClass['"'] | CaCharClass['('] | CaCharClass[')'] |
               CaCharClass['.'] | CaCharClass[';'] | CaCharClass['['] | CaCharClass[']'] |
               CaCharClass[0xFF]) == 0);
static_assert(CaCharClass[','] == BlankChar && CaCharClass[0xD7] == NameChar &&
              CaCharClass[0xF6] == OpChar);

// The comma separates tokens, and an underscore is no letter.
static_assert(CaTokenStarts[','] == CaTokenStart::Blank &&
              CaTokenStarts['_'] == CaTokenStart::None &&
              CaTokenStarts[0xD7] == CaTokenStart::None &&
              CaTokenStarts[0xF6] == CaTokenStart::Operator &&
              CaTokenStarts[EndOfTransmission] == CaTokenStart::End);
