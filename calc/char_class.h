#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Classes of bytes; no byte has more than one.
enum CaCharBit : std::uint8_t {
  NameChar = 1,   // may occur inside a name, and behind ";"
  OpChar = 2,     // may occur inside an operator's name
  BlankChar = 4,  // separates tokens; the comma is one
};

/// The class of every byte, 0 for a byte without one.
extern const std::array<std::uint8_t, 256> CaCharClass;

inline bool HasClass(int c, CaCharBit bits) {
  return (CaCharClass[static_cast<unsigned char>(c)] & bits) != 0;
}

/// How many bytes behind a text can be read, for those that look at so many at once.
constexpr std::size_t BytesAtOnce = 16;

/// How many ASCII letters, digits and underscores `text` begins with, but at most `BytesAtOnce`.
inline std::size_t PlainNameLength(const char* text) {
  using Bytes = unsigned char __attribute__((vector_size(BytesAtOnce)));
  using Words = std::uint64_t __attribute__((vector_size(BytesAtOnce)));
  Bytes bytes;
  std::memcpy(&bytes, text, sizeof bytes);
  const auto plain =
      reinterpret_cast<Words>(((bytes | 0x20) - 'a' < 26) | (bytes - '0' < 10) | (bytes == '_'));
  static_assert(std::endian::native == std::endian::little);
  const std::uint64_t first = plain[0];
  if (~first != 0) return static_cast<unsigned>(std::countr_one(first)) / 8;
  return 8 + static_cast<unsigned>(std::countr_one(std::uint64_t{plain[1]})) / 8;
}

/// How many bytes of the class `bits` there are before the first other one; a NUL is one.
inline std::size_t RunLength(const char* text, CaCharBit bits) {
  for (std::size_t length = 0;; ++length) {
    std::size_t plain = bits == NameChar ? BytesAtOnce : 0;
    for (; plain == BytesAtOnce; length += plain) plain = PlainNameLength(text + length);
    if (!HasClass(text[length], bits)) return length;
  }
}

/// The control character that ends an input just like its real end, in files too.
constexpr int EndOfTransmission = 0x04;

/// The kind of token that a byte starts.
enum class CaTokenStart : std::uint8_t {
  None,
  End,
  Blank,
  Number,
  Minus,  // a number or an operator, as the next byte says
  Name,
  Operator,
  Function,
  String,
  Comment,
};

/// The kind of token that every byte starts.
extern const std::array<CaTokenStart, 256> CaTokenStarts;

inline CaTokenStart TokenStartOf(int c) { return CaTokenStarts[static_cast<unsigned char>(c)]; }
