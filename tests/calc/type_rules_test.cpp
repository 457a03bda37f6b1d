// Which operand types every operator and function accepts, and what it makes of them.
//
// A letter a type, in the order of the type tags: Nothing, Integer, String, Real, Vector, Point,
// Matrix, Quaternion, rotation (Axis and angle), sCale. In the tables below a letter is the type of
// the result, `!` a reported mismatch and `.` a silent failure.

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
  static constexpr std::array<std::string_view, Types> Texts = {
      "nothing ", "", "\"text\" ", "2 ", "v(1,2,3) ", "p(1,2,3) ",
      "m(1,2,3,4,5,6,7,8,9,10,11,12) ", "q(1,2,3,4) ", "r(1,2,3,40) ", "s(1,2,3) "};
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
  EXPECT_EQ(StackLetters(calculator), "S" + (fails ? operands : std::string(1, expected))) << row;
}

struct Grid {
  std::string_view name;
  // A row for each type on top, a column for each type beneath.
  std::array<std::string_view, Types> rows;
};

// clang-format off
constexpr Grid Grids[] = {
    // beneath: NISRVPMQAC
    {"+", {"..........",    // nothing on top
           "!I!!!!!!!!",    // integer
           "..........",    // string
           "!!!R!!!!!!",    // real
           "....VP....",    // vector
           "....P.....",    // point
           "..........",    // matrix
           ".......Q..",    // quaternion
           "..........",    // rotation
           ".........."}},  // scale
    {"-", {"..........",
           "!I!!!!!!!!",
           "..........",
           "!!!R!!!!!!",
           "!!!!VP!!!!",
           "!!!!!V!!!!",
           "..........",
           ".......Q..",
           "..........",
           ".........."}},
    {"*", {"..........",
           "!I!!!!!!!!",
           "..........",
           "!!!RV!!QQC",
           "!!!VV!V!V!",
           "!!!!!!P!P!",
           "!!!!VPM!!!",
           "!!!Q!!!Q!!",
           "!!!QVP!!A!",
           "!!!C!!!!!!"}},
    {"%", {"..........",
           "!I!!!!!!!!",
           "..........",
           "..........",
           "!!!!R!!!!!",
           "..........",
           "..........",
           "!!!!!!!R!!",
           "..........",
           ".........."}},
    {"/", {"..........",
           "!I!!!!!!!!",
           "..........",
           "!!!RV!!QQC",
           "..........",
           "..........",
           "..........",
           "..........",
           "..........",
           ".........."}},
    {"@", {"..........",
           "..........",
           "..........",
           "..........",
           "....A.....",
           "..........",
           "..........",
           "..........",
           "..........",
           ".........."}},
};

struct OneOperandRule {
  std::string_view name;
  std::string_view results;
};

constexpr OneOperandRule OneOperandRules[] = {
    //        NISRVPMQAC
    {"~",    ".I.RV.MQA."},
    {"$",    "...RV..Q.."},
    {">>",   "...R......"},
    {"<<",   "...R......"},
    {";v",   "....VVVVV."},
    {";p",   "....PPP..."},
    {";m",   "......MMMM"},
    {";q",   "......QQQ."},
    {";r",   "......AAA."},
    {";s",   "......C..C"},
    {";u",   "....V.V..."},
    {";n",   "....V.V..."},
    {";t",   ".....PP..."},
    {";x",   "....RR...."},
    {";y",   "....RR...."},
    {";z",   "....RR...."},
    {";w",   "...RRR.RR."},
    {";a",   "........R."},
    {";sin", "...R......"}, {";cos",  "...R......"}, {";tan",  "...R......"},
    {";asin", "...R......"}, {";acos", "...R......"}, {";atan", "...R......"},
    {";ln",  "...R......"}, {";exp",  "...R......"}, {";sqrt", "...R......"},
};
// clang-format on

TEST(TypeRules, TwoOperands) {
  for (const Grid& grid : Grids) {
    for (std::size_t top = 0; top < Types; ++top) {
      for (std::size_t beneath = 0; beneath < Types; ++beneath) {
        ExpectRule(grid.name, {Letters[beneath], Letters[top]}, grid.rows[top][beneath]);
      }
    }
  }
}

TEST(TypeRules, OneOperand) {
  for (const OneOperandRule& rule : OneOperandRules) {
    for (std::size_t type = 0; type < Types; ++type) {
      ExpectRule(rule.name, std::string(1, Letters[type]), rule.results[type]);
    }
  }
}

TEST(TypeRules, OnlyTwoRealsAreComparedRaisedOrMadeAnAngle) {
  for (const std::string_view name : {"<", "<=", ">", ">=", "=", "~=", "^", ";atan2"}) {
    const bool pushes = name == "^" || name == ";atan2";
    for (const char top : Letters) {
      for (const char beneath : Letters) {
        if (top == 'R' && beneath == 'R') continue;
        ExpectRule(name, {beneath, top}, '.');
      }
    }
    if (pushes) ExpectRule(name, "RR", 'R');
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
    {7, "+", 2, 9},     {Most, "+", 1, Least}, {7, "-", 9, -2},    {Least, "-", 1, Most},
    {-7, "*", 3, -21},  {Most, "*", 2, -2},    {65536, "*", 65536, 0},
    {-7, "/", 2, -3},   {7, "/", -2, -3},      {-7, "%", 2, -1},   {7, "%", -2, 1},
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
