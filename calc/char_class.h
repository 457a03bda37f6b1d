#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <array>
#include <bit>
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

/// What may be looked at behind a run of bytes.
constexpr std::size_t LookedAtBehind = 16;

/// How many letters there are at `text`, as many as can be seen at one look: up to sixteen, none on
/// a processor that compares byte by byte.
inline std::size_t LettersInOneLook(const char* text) {
#ifdef __SSE2__
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
  const __m128i small = _mm_or_si128(bytes, _mm_set1_epi8('a' - 'A'));
  // Moved to where numbers with a sign begin, the letters are the least of all.
  const __m128i moved = _mm_add_epi8(small, _mm_set1_epi8(128 - 'a'));
  const __m128i letters = _mm_cmplt_epi8(moved, _mm_set1_epi8(-128 + 26));
  return static_cast<std::size_t>(
      std::countr_one(static_cast<unsigned>(_mm_movemask_epi8(letters))));
#else
  static_cast<void>(text);
  return 0;
#endif
}

/// The length of the run of bytes of the class `bits` at `text`, of which `known` bytes are known
/// to be of it. A NUL, of which no run has one, and `LookedAtBehind` bytes stand somewhere behind.
template <CaCharBit bits>
inline std::size_t RunLength(const char* text, std::size_t known) {
  std::size_t length = known;
  if constexpr (bits == NameChar) {
    // Names of a few letters are over before a look at many pays.
    for (; length < 3; ++length) {
      if (!HasClass(text[length], bits)) return length;
    }
    while (HasClass(text[length], bits)) length += 1 + LettersInOneLook(text + length + 1);
  } else {
    while (HasClass(text[length], bits)) ++length;
  }
  return length;
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
