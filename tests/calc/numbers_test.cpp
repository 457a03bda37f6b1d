// Reading and printing of numbers against the C library, over seeded random ones.

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "calc/object.h"
#include "calc_harness.h"
#include "geometry/matrix.h"

namespace {

using Random = std::mt19937_64;

int Below(Random& random, int limit) {
  return static_cast<int>(random() % static_cast<std::uint64_t>(limit));
}

std::string Digits(Random& random, int least, int spread) {
  std::string digits;
  for (int i = least + Below(random, spread); i > 0; --i) {
    digits += static_cast<char>('0' + Below(random, 10));
  }
  return digits;
}

/// An unsigned number in every form that the language takes.
std::string RandomNumeral(Random& random) {
  const int length = Below(random, 8) == 0 ? 400 : 20;
  std::string text = Digits(random, 1, length);
  if (Below(random, 2) == 0) text += "." + Digits(random, 0, length);
  if (Below(random, 8) == 0) text = "." + Digits(random, 1, length);
  if (Below(random, 2) == 0) {
    constexpr const char* Exponents[] = {"e", "E", "e+", "E-", "e-"};
    text += Exponents[Below(random, 5)] + Digits(random, 1, 3);
  }
  return text;
}

/// Any finite double, and a positive not-a-number.
double RandomDouble(Random& random) {
  const auto value = std::bit_cast<double>(random());
  if (value != value) return std::numeric_limits<double>::quiet_NaN();
  // Half of them where the six digits behind the point matter.
  return Below(random, 2) == 0 ? value
                               : std::ldexp(std::remainder(value, 1.0) + 1, Below(random, 40) - 20);
}

std::string Formatted(const char* format, double number) {
  char text[512];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

TEST(Numbers, ReadAsTheCLibraryReadsThem) {
  std::vector<std::string> numerals;
  // Halfway cases and the ends of the range.
  for (const char* numeral :
       {"2.2250738585072011e-308", "2.2250738585072014e-308", "4.9406564584124654e-324",
        "2.4703282292062327e-324", "2.4703282292062328e-324", "1.7976931348623157e308",
        "1.7976931348623158e308", "1.7976931348623159e308", "9007199254740993",
        "9007199254740992.999999", "0.500000000000000166533453693773481063544750213623046875",
        "6.631236846766476e-316", "1e23", "8.5e22", "1e-400", "1e400", "0.0000005", "00012.50"}) {
    numerals.emplace_back(numeral);
  }
  Random random(1);
  while (numerals.size() < 20000) {
    numerals.push_back((Below(random, 2) == 0 ? "-" : "") + RandomNumeral(random));
  }
  std::string program;
  for (const std::string& numeral : numerals) program += "\n" + numeral;
  Calculator calculator;
  EXPECT_EQ(calculator.Run(program).errors, "");
  for (; !numerals.empty(); numerals.pop_back()) {
    const double read = calculator.interpreter.Peek(0)->Value()->real;
    const double expected = std::strtod(numerals.back().c_str(), nullptr);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(expected))
        << numerals.back();
    calculator.interpreter.PopValues(1);
  }
  EXPECT_EQ(calculator.interpreter.Depth(), 0);
}

TEST(Numbers, PrintAsTheCLibraryPrintsThem) {
  Random random(2);
  for (int i = 0; i < 2000; ++i) {
    CyMatrix matrix;
    std::string reals;
    std::string rows = " m(";
    Calculator calculator;
    for (int at = 0; at < 12; ++at) {
      double& value = matrix.m[at / 4][at % 4];
      value = RandomDouble(random);
      calculator.interpreter.PushCopy(CaValue(value));
      reals += Formatted(" %f\n", value);
      rows += Formatted("%10.3f", value) + (at == 11 ? ")\n" : at % 4 == 3 ? "\n   " : ",");
    }
    calculator.interpreter.PushCopy(CaValue(matrix));
    EXPECT_EQ(calculator.Run("## ").output, reals + rows);
  }
}

#ifdef KEL_COMMA_LOCALE
TEST(Numbers, ALocaleWithADecimalCommaChangesNothing) {
  ASSERT_EQ(setenv("LOCPATH", KEL_COMMA_LOCALE, 1), 0);
  ASSERT_NE(std::setlocale(LC_ALL, "comma"), nullptr);
  ASSERT_EQ(Formatted("%.1f", 1.5), "1,5");
  EXPECT_EQ(Calculator().Run("1.5 2,25 v(1.5,2.5,-1e-1) 1234567.5 ## ").output,
            " 1.500000\n 2.000000\n 25.000000\n v(1.500000, 2.500000, -0.100000)\n"
            " 1234567.500000\n");
  std::setlocale(LC_ALL, "C");
}
#endif

}  // namespace
