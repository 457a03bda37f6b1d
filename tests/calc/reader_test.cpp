// Tokens, comments, limits, and what the end of an input does.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "calc_harness.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

// The rest of the tokens is in tests/programs/reader.txt.
constexpr Program UnprintableBytes[] = {
    {"\x01\t\r\n\v\f\x1f,\x7f 5 # ", " 5.000000\n", ""},
    {"[a\0 5 # "sv, " 5.000000\n", ""},
    {"[a\xff 5 # ", " 5.000000\n", ""},
    {"[a\\\xff 5 # ", " 5.000000\n", ""},
    {"( ) \0 _ . 5 # "sv, " 5.000000\n", "Problem in format of number\n"},
    {"5 a\xd7\xf7 : a\xd7\xf7 # ", " 5.000000\n", ""},
    {"-\xd6 ", "", "\nUnrecognized operator -\xd6\n"},
    {"\"a\0 # "sv, " \"a\"\n", ""},
    {"\"\xff\x80\" # ", " \"\xff\x80\"\n", ""},
};

// An operator or a name is dispatched only when a character stands behind it.
constexpr Program EndsOfInput[] = {
    {"5 #", "", ""},
    {"5 # 6 -", " 5.000000\n", ""},
    {"5 ? \"open # ", " 5.000000\n", ""},
    {"5 ? v(1,2", " 5.000000\n", ""},
    {"5 ? v(1,2,3 ", " 5.000000\n", ""},
    {"5 ? ;build", " 5.000000\n", ""},
    {"5 # \x04 6 # ", " 5.000000\n", ""},
    {"5 #\x04 ", "", ""},
    {"5 ? ;build\x04# ", " 5.000000\n", ""},
    {"5 ? [ \x04 ] # ", " 5.000000\n", ""},
    {"\"a\x04\" # ", "", ""},
    {"[ \x04 ] 5 # ", "", ""},
};

TEST(Reader, UnprintableBytes) { RunPrograms(UnprintableBytes); }
TEST(Reader, EndsOfInput) { RunPrograms(EndsOfInput); }

TEST(Reader, LastTokenThatNeedsNoCharacterBehindItIsPushed) {
  constexpr Program Rows[] = {
      {"6", " 6.000000\n", ""},
      {"\"a\"", " \"a\"\n", ""},
      {"-6.5e0", " -6.500000\n", ""},
      {"s(1,2,3)", " s(1.000000, 2.000000, 3.000000)\n", ""},
      {"1e+", "", "Problem in format of number\n"},
      {"6 x", " 6.000000\n", ""},
      {"6 x\x04 ", " 6.000000\n", ""},
      {"6 ;build\x04", " 6.000000\n", ""},
      {"6\x04", " 6.000000\n", ""},
  };
  for (const Program& row : Rows) {
    Calculator calculator;
    EXPECT_EQ(calculator.Run(row.text).errors, row.errors) << row.text;
    EXPECT_EQ(calculator.Run("## ").output, row.output) << row.text;
  }
}

TEST(Reader, NamesKeepTheirFirst255Characters) {
  for (const int length : {254, 255, 256, 300, 5000}) {
    const std::string name = "n" + Repeat("x", length - 1);
    const std::string kept = name.substr(0, 255);
    Calculator calculator;
    const std::string program = "5 " + name + " : ";
    EXPECT_EQ(calculator.Run(program + kept + " # ").output, " 5.000000\n") << length;
    EXPECT_EQ(calculator.Run(";" + name + "(6 # ").errors,
              "\nUnrecognized operator " + kept + "\n");
    const std::string signs = "-" + Repeat("+", length - 1);
    EXPECT_EQ(calculator.Run(signs + " ").errors,
              "\nUnrecognized operator " + signs.substr(0, 255) + "\n");
    EXPECT_EQ(calculator.Run(name + "(").errors,
              "\nUnrecognized constant specifier " + kept + "\n");
  }
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

struct ByteRange {
  int first;
  int last;
};
constexpr ByteRange NameBytes[] = {{0x30, 0x39}, {0x41, 0x5A}, {0x5F, 0x5F},
                                   {0x61, 0x7A}, {0xA7, 0xA7}, {0xB7, 0xB7},
                                   {0xBF, 0xD5}, {0xD7, 0xF5}, {0xF7, 0xFE}};
constexpr ByteRange OperatorBytes[] = {{0x21, 0x21}, {0x23, 0x27}, {0x2A, 0x2B}, {0x2D, 0x2D},
                                       {0x2F, 0x2F}, {0x3A, 0x3A}, {0x3C, 0x40}, {0x5C, 0x5C},
                                       {0x5E, 0x5E}, {0x60, 0x60}, {0x7B, 0x7E}, {0xA1, 0xA6},
                                       {0xA8, 0xB6}, {0xB8, 0xBE}, {0xD6, 0xD6}, {0xF6, 0xF6}};

template <std::size_t Count>
bool Holds(const ByteRange (&ranges)[Count], int byte) {
  for (const ByteRange& range : ranges) {
    if (byte >= range.first && byte <= range.last) return true;
  }
  return false;
}

TEST(Reader, ClassOfEveryByteInsideATokenIsThatOfTheTable) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string middle(1, static_cast<char>(byte));
    const std::string name = "Q" + middle + "Q";
    const std::string sign = "+" + middle + "+";
    const auto reports = [](const std::string& text, const std::string& token) {
      Calculator calculator;
      return calculator.Run(text + " ")
          .errors.starts_with("\nUnrecognized operator " + token + "\n");
    };
    EXPECT_EQ(reports(";" + name, name), Holds(NameBytes, byte)) << "byte " << byte;
    EXPECT_EQ(reports(sign, sign), Holds(OperatorBytes, byte)) << "byte " << byte;
  }
}

}  // namespace
