#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

/// 32-bit arithmetic for which every operand is good: what does not fit wraps around, as the
/// processor's own arithmetic does, and what has no value has a harmless one.

constexpr std::int32_t MostNegative = std::numeric_limits<std::int32_t>::min();

constexpr std::int32_t Wrapped(std::int64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

constexpr std::int32_t Sum(std::int32_t a, std::int32_t b) { return Wrapped(std::int64_t{a} + b); }

constexpr std::int32_t Difference(std::int32_t a, std::int32_t b) {
  return Wrapped(std::int64_t{a} - b);
}

constexpr std::int32_t Product(std::int32_t a, std::int32_t b) {
  return Wrapped(std::int64_t{a} * b);
}

/// `a` divided by `b`, toward zero; 0 when `b` is 0.
constexpr std::int32_t Quotient(std::int32_t a, std::int32_t b) {
  return b == 0 ? 0 : Wrapped(std::int64_t{a} / b);
}

/// What is left of `a` after division by `b`, with the sign of `a`; 0 when `b` is 0.
constexpr std::int32_t Remainder(std::int32_t a, std::int32_t b) {
  return b == 0 ? 0 : Wrapped(std::int64_t{a} % b);
}

constexpr std::int32_t Magnitude(std::int32_t a) { return a < 0 ? Wrapped(-std::int64_t{a}) : a; }

/// `value` toward zero; the most negative number for what no 32-bit number is, infinities and
/// not-a-number among it.
inline std::int32_t Truncated(double value) {
  const double whole = std::trunc(value);
  const bool fits = whole >= -2147483648.0 && whole <= 2147483647.0;
  return fits ? static_cast<std::int32_t>(whole) : MostNegative;
}
