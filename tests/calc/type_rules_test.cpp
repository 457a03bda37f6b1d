// Which operand types every operator and function accepts, and what it makes of them.
//
// A letter a type, in the order of the type tags: Nothing, Integer, String, Real, Vector, Point,
// Matrix, Quaternion, rotation (Axis and angle), sCale. In the tables below a letter is the type of
// the result, `!` a reported mismatch, `.` a silent failure, and 0 that nothing is pushed.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "calc/object.h"
#include "calc_harness.h"

namespace {

constexpr std::string_view Letters = "NISRVPMQAC";
constexpr std::size_t Types = 10;

void Push(Calculator& calculator, char letter) {
  if (letter == 'I') {
    calculator.interpreter.PushCopy(CaValue(std::int32_t{7}));
    return;
  }
  static constexpr std::array<std::string_view, Types> Texts = {"nothing ",
                                                                "",
                                                                "\"text\" ",
                                                                "2 ",
                                                                "v(1,2,3) ",
                                                                "p(1,2,3) ",
                                                                "m(1,2,3,4,5,6,7,8,9,10,11,12) ",
                                                                "q(1,2,3,4) ",
                                                                "r(1,2,3,40) ",
                                                                "s(1,2,3) "};
  calculator.Run(Texts[Letters.find(letter)]);
}

/// The types on the stack from the bottom up.
std::string StackLetters(Calculator& calculator) {
  std::string letters;
  for (int i = calculator.interpreter.Depth() - 1; i >= 0; --i) {
    const int type = calculator.interpreter.Peek(i)->Value()->type;
    letters += Letters[static_cast<std::size_t>(type)];
  }
  return letters;
}

/// Runs `name` on the operands (written bottom first, a string beneath them) and checks that
/// `expected` comes of it.
void ExpectRule(std::string_view name, const std::string& operands, char expected) {
  Calculator calculator;
  Push(calculator, 'S');
  for (const char letter : operands) Push(calculator, letter);
  const Written written = calculator.Run(std::string(name) + " ");
  const bool fails = expected == '!' || expected == '.';
  const std::string report = "\nType mismatch for operator " + std::string(name) + "\n";
  const std::string row = std::string(name) + " on " + operands;
  EXPECT_EQ(written.errors, (expected == '!' ? report : "") + (fails ? "\a \n" : "")) << row;
  const std::string left = fails ? operands : std::string(expected == '0' ? 0 : 1, expected);
  EXPECT_EQ(StackLetters(calculator), "S" + left) << row;
}

struct TopRule {
  std::string_view name;
  char top;
  std::string_view results;  // a letter for each type beneath
};

// clang-format off
// Every type on top that is not listed for an operator fails silently whatever is beneath.
constexpr TopRule TopRules[] = {
    // beneath:  NISRVPMQAC
    {"+", 'I',  "!I!!!!!!!!"},
    {"+", 'R',  "!!!R!!!!!!"},
    {"+", 'V',  "....VP...."},
    {"+", 'P',  "....P....."},
    {"+", 'Q',  ".......Q.."},
    {"-", 'I',  "!I!!!!!!!!"},
    {"-", 'R',  "!!!R!!!!!!"},
    {"-", 'V',  "!!!!VP!!!!"},
    {"-", 'P',  "!!!!!V!!!!"},
    {"-", 'Q',  ".......Q.."},
    {"*", 'I',  "!I!!!!!!!!"},
    {"*", 'R',  "!!!RV!!QQC"},
    {"*", 'V',  "!!!VV!V!V!"},
    {"*", 'P',  "!!!!!!P!P!"},
    {"*", 'M',  "!!!!VPM!!!"},
    {"*", 'Q',  "!!!Q!!!Q!!"},
    {"*", 'A',  "!!!QVP!!A!"},
    {"*", 'C',  "!!!C!!!!!!"},
    {"%", 'I',  "!I!!!!!!!!"},
    {"%", 'V',  "!!!!R!!!!!"},
    {"%", 'Q',  "!!!!!!!R!!"},
    {"/", 'I',  "!I!!!!!!!!"},
    {"/", 'R',  "!!!RV!!QQC"},
    {"@", 'V',  "....A....."},
    {"^", 'R',  "...R......"},
    {";atan2", 'R', "...R......"},
    {"<", 'R',  "...0......"}, {"<=", 'R', "...0......"},
    {">", 'R',  "...0......"}, {">=", 'R', "...0......"},
    {"=", 'R',  "...0......"}, {"~=", 'R', "...0......"},
};

struct OneOperandRule {
  std::string_view names;  // each followed by a blank
  std::string_view results;
};

constexpr OneOperandRule OneOperandRules[] = {
    //            NISRVPMQAC
    {"~ ",       ".I.RV.MQA."},
    {"$ ",       "...RV..Q.."},
    {";v ",      "....VVVVV."},
    {";p ",      "....PPP..."},
    {";m ",      "......MMMM"},
    {";q ",      "......QQQ."},
    {";r ",      "......AAA."},
    {";s ",      "......C..C"},
    {";u ;n ",   "....V.V..."},
    {";t ",      ".....PP..."},
    {";x ;y ;z ", "....RR...."},
    {";w ",      "...RRR.RR."},
    {";a ",      "........R."},
    {">> << ;sin ;cos ;tan ;asin ;acos ;atan ;ln ;exp ;sqrt ", "...R......"},
};
// clang-format on

std::string_view ResultsFor(std::string_view name, char top) {
  for (const TopRule& rule : TopRules) {
    if (rule.name == name && rule.top == top) return rule.results;
  }
  return "..........";
}

TEST(TypeRules, TwoOperands) {
  std::string_view done;
  for (const TopRule& rule : TopRules) {
    if (rule.name == done) continue;
    done = rule.name;
    for (const char top : Letters) {
      for (std::size_t beneath = 0; beneath < Types; ++beneath) {
        ExpectRule(rule.name, {Letters[beneath], top}, ResultsFor(rule.name, top)[beneath]);
      }
    }
  }
}

TEST(TypeRules, OneOperand) {
  for (const OneOperandRule& rule : OneOperandRules) {
    for (std::size_t at = 0; at < rule.names.size(); at = rule.names.find(' ', at) + 1) {
      const std::string_view name = rule.names.substr(at, rule.names.find(' ', at) - at);
      for (std::size_t type = 0; type < Types; ++type) {
        ExpectRule(name, std::string(1, Letters[type]), rule.results[type]);
      }
    }
  }
}

TEST(TypeRules, ConstructorsReportAnIntegerBeneathButNotOnTop) {
  for (const std::string_view name : {";v", ";p", ";s"}) {
    ExpectRule(name, "IRR", '!');
    ExpectRule(name, "RRI", '.');
  }
  ExpectRule(";q", "IRRR", '!');
  ExpectRule(";r", "RIRR", '!');
  ExpectRule(";m", "VVVP", 'M');
  ExpectRule(";m", "VPVP", '!');
}

struct IntegerCase {
  std::int32_t beneath;
  std::string_view name;
  std::int32_t top;
  std::int32_t result;
};

constexpr std::int32_t Least = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t Most = std::numeric_limits<std::int32_t>::max();

constexpr IntegerCase IntegerCases[] = {
    {7, "+", 2, 9},    {Most, "+", 1, Least}, {7, "-", 9, -2},        {Least, "-", 1, Most},
    {-7, "*", 3, -21}, {Most, "*", 2, -2},    {65536, "*", 65536, 0}, {-7, "/", 2, -3},
    {7, "/", -2, -3},  {-7, "%", 2, -1},      {7, "%", -2, 1},
};

TEST(TypeRules, IntegersWrapAndDivideTowardsZero) {
  for (const IntegerCase& row : IntegerCases) {
    Calculator calculator;
    calculator.interpreter.PushCopy(CaValue(row.beneath));
    calculator.interpreter.PushCopy(CaValue(row.top));
    EXPECT_EQ(calculator.Run(std::string(row.name) + " # ").output,
              " " + std::to_string(row.result) + "\n")
        << row.beneath << " " << row.top << " " << row.name;
  }
  for (const std::int32_t value : {0, 7, -7, Most, Least}) {
    Calculator calculator;
    calculator.interpreter.PushCopy(CaValue(value));
    const std::int32_t negated = value == Least ? Least : -value;
    EXPECT_EQ(calculator.Run("~ # ").output, " " + std::to_string(negated) + "\n");
  }
}

}  // namespace
