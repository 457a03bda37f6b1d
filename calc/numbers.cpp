#include "calc/numbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "calc/character_source.h"

namespace {

constexpr bool IsDigit(int c) { return c >= '0' && c <= '9'; }
constexpr bool IsExponentMark(int c) { return c == 'e' || c == 'E'; }

#ifdef __cpp_lib_to_chars

/// What a number outside the range of a double is taken for. `text` is a complete number.
double BeyondRange(std::string_view text) {
  // The power of ten of the first digit that is not zero decides.
  const std::size_t mark = std::min(text.find_first_of("eE"), text.size());
  const std::string_view mantissa = text.substr(0, mark);
  const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
  const auto first = static_cast<std::int64_t>(mantissa.find_first_not_of("0."));
  std::int64_t power = point > first ? point - first - 1 : point - first;
  if (mark < text.size()) {
    const bool negative = text[mark + 1] == '-';
    std::int64_t exponent = 0;
    for (const char c : text.substr(mark + 1)) {
      if (IsDigit(c) && exponent < std::numeric_limits<std::int64_t>::max() / 16) {
        exponent = exponent * 10 + (c - '0');
      }
    }
    power += negative ? -exponent : exponent;
  }
  return power > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

/// The double nearest to `text`, a complete number; it may lack the zero before the point.
double Converted(const std::string& text) {
  double number = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc::result_out_of_range ? BeyondRange(text) : number;
}

/// The whole number and a byte behind it are at hand.
bool ReadAtHand(CaCharacterSource& source, double& number) {
  const std::string_view text = source.AtHand();
  if (text.empty() || (!IsDigit(text[0]) && text[0] != '.')) return false;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr == end || IsExponentMark(*result.ptr)) return false;
  source.Skip(static_cast<std::size_t>(result.ptr - text.data()));
  return true;
}

#else  // older standard libraries of clang, where only the C library converts to doubles

double Converted(const std::string& text) {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(text.c_str(), nullptr, locale);
}

/// Nothing but digits, points and exponents may reach strtod_l, so everything is collected.
bool ReadAtHand(CaCharacterSource&, double&) { return false; }

#endif

/// Moves the next byte to `text` when `accept` takes it.
template <typename Accept>
bool Take(CaCharacterSource& source, std::string& text, Accept accept) {
  const int c = source.Read();
  if (c == CaCharacterSource::End) return false;
  if (!accept(c)) {
    source.PushBack();
    return false;
  }
  text.push_back(static_cast<char>(c));
  return true;
}

int TakeDigits(CaCharacterSource& source, std::string& text) {
  int any = 0;
  while (Take(source, text, IsDigit)) any = 1;
  return any;
}

/// Collects byte by byte what may be cut in two by the end of a block, or be no number at all.
bool ReadCollected(CaCharacterSource& source, double& number) {
  std::string text;
  int digits = TakeDigits(source, text);
  if (Take(source, text, [](int c) { return c == '.'; })) digits |= TakeDigits(source, text);
  if (digits == 0) return false;
  if (Take(source, text, IsExponentMark)) {
    Take(source, text, [](int c) { return c == '+' || c == '-'; });
    if (TakeDigits(source, text) == 0) return false;
  }
  number = Converted(text);
  return true;
}

constexpr double PowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr std::ptrdiff_t ExactDigits = std::size(PowersOfTen) - 1;

/// Up to 15 digits without an exponent, at hand with a byte behind them. The digits and the power
/// of ten are exact doubles, so that one division rounds once, just as the full conversion does.
bool ReadShort(CaCharacterSource& source, double& number) {
  // Digits end at the NUL behind what is at hand at the latest.
  const char* const text = source.AtHand().data();
  const char* at = text;
  std::uint64_t digits = 0;
  const auto takeDigits = [&at, &digits] {
    const char* const first = at;
    for (; IsDigit(*at); ++at) digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
    return at - first;
  };
  const std::ptrdiff_t whole = takeDigits();
  std::ptrdiff_t decimals = 0;
  if (*at == '.') {
    ++at;
    decimals = takeDigits();
  }
  const std::ptrdiff_t count = whole + decimals;
  const std::string_view taken(text, static_cast<std::size_t>(at - text));
  if (count == 0 || count > ExactDigits || IsExponentMark(*at) || source.EndsWith(taken)) {
    return false;
  }
  source.Skip(taken.size());
  number = static_cast<double>(static_cast<std::int64_t>(digits)) / PowersOfTen[decimals];
  return true;
}

[[gnu::noinline]] bool ReadLong(CaCharacterSource& source, double& number) {
  return ReadAtHand(source, number) || ReadCollected(source, number);
}

}  // namespace

bool ReadUnsigned(CaCharacterSource& source, double& number) {
  return ReadShort(source, number) || ReadLong(source, number);
}

bool ReadSigned(CaCharacterSource& source, double& number) {
  const int c = source.Read();
  if (c == CaCharacterSource::End) return false;
  if (c != '-' && c != '+') source.PushBack();
  if (!ReadUnsigned(source, number)) return false;
  if (c == '-') number = -number;
  return true;
}

namespace {

/// Digits in pairs: 00 01 02 ... 99.
constexpr std::array<char, 200> PairsOfDigits = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

char* WritePair(char* to, std::uint32_t number) {
  std::memcpy(to, PairsOfDigits.data() + 2 * number, 2);
  return to + 2;
}

char* WriteWhole(char* to, std::uint64_t number) {
  std::ptrdiff_t digits = 1;
  for (std::uint64_t power = 10; number >= power; power *= 10) ++digits;  // at most 16
  char* at = to + digits;
  for (; number >= 10; number /= 100) WritePair(at -= 2, static_cast<std::uint32_t>(number % 100));
  if (at != to) *to = static_cast<char>('0' + number);
  return to + digits;
}

/// Six digits, or the last three.
char* WriteDecimals(char* to, std::uint32_t number, int decimals) {
  const std::uint32_t upper = number / 100;
  if (decimals == 6) {
    to = WritePair(WritePair(to, upper / 100), upper % 100);
  } else {
    *to++ = static_cast<char>('0' + upper);
  }
  return WritePair(to, number % 100);
}

/// Whole part and decimals of a number, the latter as a whole number below `one`.
struct Decimals {
  std::uint64_t whole;
  std::uint32_t fraction;
};

/// Those of mantissa / 2^shift, where the mantissa has 53 bits and the shift is at least 0. They
/// are exact: the fraction times `one` is a product of up to 73 bits, in two parts, and what its
/// division leaves rounds it to the nearest, a half to the even digit, as the full conversion does.
Decimals RoundedDecimals(std::uint64_t mantissa, int shift, std::uint32_t one) {
  const bool isSmall = shift > 52;  // below 1
  const std::uint64_t whole = isSmall ? 0 : mantissa >> shift;
  std::uint64_t rest = isSmall ? mantissa : mantissa & ((std::uint64_t{1} << shift) - 1);
  if (shift < 32) rest <<= 32 - shift;
  // The product is high * 2^32 + low % 2^32, and what it is divided by 2^32 * 2^point. Beyond 63 it
  // counts as nothing all the same.
  const std::uint64_t low = (rest & 0xFFFFFFFF) * one;
  const std::uint64_t high = (rest >> 32) * one + (low >> 32);
  const int point = std::clamp(shift - 32, 0, 63);
  const std::uint64_t unit = std::uint64_t{1} << point;

  auto fraction = static_cast<std::uint32_t>(high >> point);
  const std::uint64_t twice = (high & (unit - 1)) << 1 | (low >> 31 & 1);
  const bool isMore = (low & 0x7FFFFFFF) != 0;
  if (twice > unit || (twice == unit && (isMore || fraction % 2 != 0))) ++fraction;
  return fraction == one ? Decimals{whole + 1, 0} : Decimals{whole, fraction};
}

/// A number below 2^53 in size; null for any other.
char* WriteShort(char* to, double number, int decimals) {
  constexpr int MantissaBits = 52;
  constexpr std::uint64_t Hidden = std::uint64_t{1} << MantissaBits;
  constexpr int WholeExponent = 1023 + MantissaBits;  // where the last bit of the mantissa is 1
  const auto bits = std::bit_cast<std::uint64_t>(number);
  const int shift = WholeExponent - static_cast<int>(bits >> MantissaBits & 0x7FF);
  if (shift < 0) return nullptr;
  // Zero and the smallest numbers have no hidden bit; with it they are still next to nothing.
  const auto [whole, fraction] =
      RoundedDecimals((bits & (Hidden - 1)) | Hidden, shift, decimals == 6 ? 1'000'000 : 1000);
  if (std::signbit(number)) *to++ = '-';
  to = WriteWhole(to, whole);
  *to++ = '.';
  return WriteDecimals(to, fraction, decimals);
}

char* WriteAny(char* to, double number, int decimals) {
  if (std::isfinite(number)) {
    return std::to_chars(to, to + LongestFixed, number, std::chars_format::fixed, decimals).ptr;
  }
  if (std::signbit(number)) *to++ = '-';
  return std::copy_n(std::isnan(number) ? "nan" : "inf", 3, to);
}

}  // namespace

char* WriteFixed(char* to, double number, int decimals, int width) {
  char* end = WriteShort(to, number, decimals);
  if (end == nullptr) end = WriteAny(to, number, decimals);
  const std::ptrdiff_t padding = width - (end - to);
  if (padding <= 0) return end;
  std::memmove(to + padding, to, static_cast<std::size_t>(end - to));
  std::memset(to, ' ', static_cast<std::size_t>(padding));
  return end + padding;
}
