// Tokens, comments, limits, and what the end of an input does.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "calc_harness.h"

namespace {

using namespace std::string_literals;

// The rest of the tokens is in tests/programs/reader.txt.
const Program UnprintableBytes[] = {
    {"\x01\t\r\n\v\f\x1f,\x7f 5 # ", " 5.000000\n", ""},
    {"[a\0 5 # "s, " 5.000000\n", ""},
    {"[a\xff 5 # ", " 5.000000\n", ""},
    {"[a\\\xff 5 # ", " 5.000000\n", ""},
    {"( ) \0 _ . 5 # "s, " 5.000000\n", "Problem in format of number\n"},
    {"\"a\0 # "s, " \"a\"\n", ""},
    {"\"a\\\0 # "s, " \"a\"\n", ""},  // an escaped one ends it, too
    {"\"\xff\x80\" # ", " \"\xff\x80\"\n", ""},
};

TEST(Reader, UnprintableBytes) {
  for (const Program& program : UnprintableBytes) RunProgram(program);
}

// A text, what it writes, and what it leaves on the stack. An operator or a name is dispatched only
// when a character stands behind it.
constexpr std::string_view Ends[][3] = {
    {"5 # 6 -", " 5.000000\n", " 6.000000\n"},
    {"5 x : x", "", ""},
    {";build", "", ""},
    {"\"open # ", "", ""},
    {"[ a [ b ] \" ", "", ""},
    {"v(1,2", "", ""},
    {"v(1,2,3 ", "", ""},
    {"1e+", "Problem in format of number\n", ""},
    {"-6.5e0", "", " -6.500000\n"},
    {"\"a\"", "", " \"a\"\n"},
    {"s(1,2,3)", "", " s(1.000000, 2.000000, 3.000000)\n"},
    {"5 # \x04 6 # ", " 5.000000\n", ""},
    {"5 #\x04 ", "", " 5.000000\n"},
    {";build\x04# ", "", ""},
    {"6\x04", "", " 6.000000\n"},
    {"\"a\x04\" # ", "", ""},
    {"5 [ \x04 ] # ", "", " 5.000000\n"},
};

TEST(Reader, EndsOfInput) {
  for (const auto& [text, written, left] : Ends) {
    Calculator calculator;
    const Written all = calculator.Run(text);
    EXPECT_EQ(all.output + all.errors, written) << text;
    EXPECT_EQ(calculator.Run("## ").output, left) << text;
  }
}

void ExpectCut(const std::string& name, const std::string& signs) {
  const std::string kept = name.substr(0, 255);
  const std::string text = "5 " + name + " : " + kept + " # ;" + name + "(" + signs + " " + name;
  const Written written = Calculator().Run(text + "(");
  EXPECT_EQ(written.output, " 5.000000\n") << name.size();
  EXPECT_EQ(written.errors, "\nUnrecognized operator " + kept + "\n\nUnrecognized operator " +
                                signs.substr(0, 255) + "\n\nUnrecognized constant specifier " +
                                kept + "\n");
}

TEST(Reader, NamesKeepTheirFirst255Characters) {
  for (const int length : {254, 255, 256, 300, 5000}) {
    ExpectCut("n" + Repeat("x", length - 1), "-" + Repeat("+", length - 1));
  }
}

// A table of names grows, and names that differ in one character anywhere are different.
TEST(Reader, ThousandsOfNamesOfAnyLength) {
  std::string define;
  std::string sum = "0 ";
  for (int i = 0; i < 2000; ++i) {
    const int length = i % 40;
    std::string name = "n" + Repeat("x", length);
    name.insert(name.size() - static_cast<std::size_t>(i / 40 % (length + 1)), std::to_string(i));
    define += std::to_string(i) + " " + name + " : ";
    sum += name + " + ";
  }
  EXPECT_EQ(Calculator().Run(define + sum + "# ").output, " 1999000.000000\n");
}

TEST(Reader, StringsEndAfter1024Characters) {
  const std::string most = Repeat("a", 1023);
  Calculator calculator;
  EXPECT_EQ(calculator.Run("\"" + most + "\" # ").output, " \"" + most + "\"\n");
  // The closing mark of a full string opens the next one.
  EXPECT_EQ(calculator.Run("\"" + most + "b\"c\" ## ").output, " \"" + most + "b\"\n \"c\"\n"s);
  EXPECT_EQ(calculator.Run("\"" + most + "\\\"5 ## ").output, " \"" + most + "\"\"\n 5.000000\n");
  EXPECT_EQ(calculator.Run("\"" + most + "bc# # # ").output, " \"" + most + "b\"\n");
}

// The first and the last byte of every range.
constexpr std::string_view NameBytes = "09AZ__az\xA7\xA7\xB7\xB7\xBF\xD5\xD7\xF5\xF7\xFE";
constexpr std::string_view OperatorBytes =
    "!!#'*+--//::<@\\\\^^``{~\xA1\xA6\xA8\xB6\xB8\xBE\xD6\xD6\xF6\xF6";

bool Holds(std::string_view ranges, std::string_view byte) {
  for (; !ranges.empty(); ranges.remove_prefix(2)) {
    if (ranges.substr(0, 1) <= byte && byte <= ranges.substr(1, 1)) return true;
  }
  return false;
}

bool IsToken(const std::string& token, const std::string& text) {
  return Calculator().Run(text + " ").errors.starts_with("\nUnrecognized operator " + token + "\n");
}

TEST(Reader, ClassOfEveryByteInsideATokenIsThatOfTheTable) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string middle(1, static_cast<char>(byte));
    const std::string name = "Q" + middle + "Q";
    const std::string sign = "+" + middle + "+";
    EXPECT_EQ(IsToken(name, ";" + name), Holds(NameBytes, middle)) << "byte " << byte;
    EXPECT_EQ(IsToken(sign, sign), Holds(OperatorBytes, middle)) << "byte " << byte;
  }
}

}  // namespace
