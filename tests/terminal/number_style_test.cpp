#include "tools/kelcalc/number_style.h"

#include <gtest/gtest.h>

#include <limits>

#include "calc/object.h"

namespace {

using kelcalc::ValueText;

TEST(NumberStyle, ShowsSignificantDigits) {
  const double third = 1.0 / 3.0;
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    double number;
    int digits;
    const char* text;
  } cases[] = {
      {third, 1, "0.3"},
      {third, 17, "0.33333333333333331"},
      {2.5, 6, "2.5"},
      {123456.0, 3, "1.23e+05"},
      {0.00001234, 2, "1.2e-05"},
      {-0.0, 4, "-0"},
      {1e300, 17, "1.0000000000000001e+300"},
      {infinity, 3, "inf"},
      {9.999, 2, "10"},
  };
  for (const auto& expected : cases) {
    EXPECT_EQ(ValueText(CaValue(expected.number), expected.digits), expected.text);
  }
}

TEST(NumberStyle, KeepsTheNotationOfEveryType) {
  CyMatrix matrix;
  matrix.SetTrans(-1.5, 20.0, 0.125);
  EXPECT_EQ(ValueText(CaValue(), 3), "");
  EXPECT_EQ(ValueText(CaValue(std::int32_t{7}), 3), "7");
  EXPECT_EQ(ValueText(CaValue("a\nb"), 3), "\"a\nb\"");
  EXPECT_EQ(ValueText(CaValue(TypeVector, CyVector(1, 2, 3)), 3), "v(1, 2, 3)");
  EXPECT_EQ(ValueText(CaValue(TypePoint, CyVector(1, 2, 3)), 3), "p(1, 2, 3)");
  EXPECT_EQ(ValueText(CaValue(TypeScale, CyVector(1, 2, 3)), 3), "s(1, 2, 3)");
  EXPECT_EQ(ValueText(CaValue(CyQuaternion(1, CyVector(2, 3, 4))), 3), "q(1, 2, 3, 4)");
  EXPECT_EQ(ValueText(CaValue(CyRotation(CyVector(0, 0, 1), 90.125)), 4), "r(0, 0, 1, 90.12)");
  EXPECT_EQ(ValueText(CaValue(matrix), 3),
            "m(    1,     0,     0,  -1.5\n"
            "      0,     1,     0,    20\n"
            "      0,     0,     1, 0.125)");
}

}  // namespace
