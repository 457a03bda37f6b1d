// The elementary functions that stand in for the run-time's own, and the reading of numbers.

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>

namespace {

struct Row {
  const char* name;
  double (*function)(double);
  double argument;
  double expected;  // the nearest double, computed with 113 bits on another machine
};

constexpr Row Rows[] = {
    {"sin", std::sin, 0x1.0c152382d7365p-1, 0x1.fffffffffffffp-2},
    {"sin", std::sin, -0x1.8fe3cc6ff87dep+1, -0x1.1df0b2b89dd09p-6},
    {"sin", std::sin, 0x1.0f0cf064dd592p+73, -0x1.b453ab76bf397p-1},
    {"cos", std::cos, 0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54},
    {"cos", std::cos, 0x1.0c152382d7365p+0, 0x1.0000000000001p-1},
    {"cos", std::cos, 0x1.7e43c8800759cp+996, -0x1.2699022adc4c1p-1},
    {"tan", std::tan, 0x1.921fb54442d18p+0, 0x1.d02967c31cdb5p+53},
    {"tan", std::tan, 0x1.921fb54442d18p-1, 0x1.fffffffffffffp-1},
    {"tan", std::tan, -0x1.2c79d3890cf35p+2, -0x1.ca51d76749a77p+5},
    {"asin", std::asin, 0x1p-1, 0x1.0c152382d7366p-1},
    {"asin", std::asin, -0x1.ffffde7210be9p-1, -0x1.91c306b2c13adp+0},
    {"acos", std::acos, 0x1.999999999999ap-4, 0x1.787b22ce3f59p+0},
    {"acos", std::acos, -0x1p+0, 0x1.921fb54442d18p+1},
    {"atan", std::atan, 0x1p+0, 0x1.921fb54442d18p-1},
    {"atan", std::atan, 0x1.12e0be826d695p-30, 0x1.12e0be826d695p-30},
    {"atan", std::atan, -0x1.d99999999999ap+1, -0x1.4e8c94dbf54e5p+0},
    {"exp", std::exp, 0x1p+0, 0x1.5bf0a8b145769p+1},
    {"exp", std::exp, 0x1.4p+4, 0x1.ceb088b68e804p+28},
    {"exp", std::exp, -0x1.624p+9, 0x0.e6cf6d08897acp-1022},
    {"exp", std::exp, 0x1.62d999999999ap+9, 0x1.d75ae7a50ee14p+1023},
    {"log", std::log, 0x1.4p+3, 0x1.26bb1bbb55516p+1},
    {"log", std::log, 0x1.fffffca501acbp-1, -0x1.ad7f2b1049b9fp-24},
    {"log", std::log, 0x0.012688b70e62bp-1022, -0x1.64e69394d9508p+9},
    {"sqrt", std::sqrt, 0x1p+1, 0x1.6a09e667f3bcdp+0},
    {"sqrt", std::sqrt, 0x1.3333333333333p-2, 0x1.186f174f88472p-1},
    {"sqrt", std::sqrt, 0x0.00000000007e8p-1022, 0x1.67e93ddbc0e73p-532},
};

TEST(Elementary, GivesTheNearestDouble) {
  for (const Row& row : Rows) {
    EXPECT_EQ(row.function(row.argument), row.expected) << row.name << " " << row.argument;
  }
  EXPECT_EQ(std::atan2(33.3, -7.1), 0x1.c7e6b451bd07fp+0);
  EXPECT_EQ(std::pow(10.0, -5.5), 0x1.a86f0875fcf94p-19);
}

TEST(Elementary, KeepsZerosSignsAndTheirAbsence) {
  double (*const odd[])(double) = {std::sin, std::tan, std::asin, std::atan, std::sqrt};
  for (double (*function)(double) : odd) {
    EXPECT_TRUE(std::signbit(function(-0.0)));
    EXPECT_EQ(function(-0.0), 0.0);
  }
  EXPECT_EQ(std::log(0.0), -HUGE_VAL);
  EXPECT_EQ(std::exp(710.0), HUGE_VAL);
  EXPECT_EQ(std::exp(-HUGE_VAL), 0.0);
  EXPECT_EQ(std::atan2(-0.0, -1.0), -std::atan2(0.0, -1.0));
  for (const double none : {std::sqrt(-1.0), std::log(-1.0), std::asin(2.0), std::acos(-1.5),
                            std::sin(HUGE_VAL), std::tan(std::nan(""))}) {
    EXPECT_TRUE(std::isnan(none));
  }
}

// Rounded to the 64 bits of the x87 registers first, these come out one bit off.
TEST(Elementary, NumbersAreReadExactly) {
  struct {
    const char* text;
    double expected;
  } rows[] = {
      {"4912217788368945e12", 0x1.fbe9527c982fdp+91},
      {"971830039251268e19", 0x1.df263227a728fp+112},
      {"3678278749491965e22", 0x1.bac1b70a2ff7bp+124},
      {"6314545055962114e8", 0x1.0b6e6f4724cbdp+79},
  };
  for (const auto& row : rows) {
    double number = 0;
    std::from_chars(row.text, row.text + std::strlen(row.text), number);
    EXPECT_EQ(number, row.expected) << row.text;
  }
}

}  // namespace
