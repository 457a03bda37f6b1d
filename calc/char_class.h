#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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

/// How many bytes of the class `bits` there are before the first other one; a NUL is one.
inline std::size_t RunLength(const char* text, CaCharBit bits) {
  // Four at a time, which takes two thirds of the instructions.
  for (const char* at = text;; at += 4) {
    for (std::size_t more = 0; more < 4; ++more) {
      if (!HasClass(at[more], bits)) return static_cast<std::size_t>(at - text) + more;
    }
  }
}

/// The control character that ends an input just like its real end, in files too.
constexpr int EndOfTransmission = 0x04;

/// The kind of token that a byte starts.
enum class CaTokenStart : std::uint8_t {
  None,  // a byte that is passed over, and told of to who watches
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
