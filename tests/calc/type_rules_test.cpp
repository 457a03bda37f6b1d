// Which operand types every operator and function accepts, and what it makes of them.
//
// A letter a type, in the order of the type tags: Nothing, Integer, String, Real, Vector, Point,
// Matrix, Quaternion, rotation (Axis and angle), sCale.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "calc/object.h"
#include "calc_harness.h"

namespace {

constexpr std::string_view Letters = "NISRVPMQAC";
void Push(Calculator& calculator, char letter) {
  CaValue value("text");
  value.integer = 7;
  value.real = 2.0;
  value.type = static_cast<std::int32_t>(Letters.find(letter));
  calculator.interpreter.PushCopy(value);
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
void ExpectRule(const std::string& name, const std::string& operands, char expected) {
  Calculator calculator;
  for (const char letter : "S" + operands) Push(calculator, letter);
  const std::string errors = calculator.Run(name + " ").errors;
  const bool fails = expected == '!' || expected == '.';
  const std::string report = "\nType mismatch for operator " + name + "\n";
  EXPECT_EQ(errors, (expected == '!' ? report : "") + (fails ? "\a \n" : ""))
      << name << " on " << operands;
  const std::string left = fails ? operands : std::string(expected == '0' ? 0 : 1, expected);
  EXPECT_EQ(StackLetters(calculator), "S" + left) << name << " on " << operands;
}

struct Rule {
  std::string_view names;
  std::string_view outcomes;  // the operands, bottom first, and behind them what comes of them
  std::string_view reported;  // the types on top with which all other operands are reported
};

// Outcomes are the type of the result, `!` for a reported mismatch, `.` for a silent failure, and 0
// where nothing is pushed. Operands that are not listed fail silently, but for those reported.
constexpr Rule Rules[] = {
    {"+", "III RRR VVV PVP VPP QQQ", "IR"},
    {"-", "III RRR VVV PVP PPV QQQ", "IRVP"},
    {"*", "III RRR VRV QRQ ARQ CRC RVV VVV MVV AVV MPP APP VMV PMP MMM RQQ QQQ RAQ VAV PAP AAA RCC",
     "IRVPMQAC"},
    {"%", "III VVR QQR", "IVQ"},
    {"/", "III RRR VRV QRQ ARQ CRC", "IR"},
    {"@", "VVA", ""},
    {"^ ;atan2", "RRR", ""},
    {"< <= > >= = ~=", "RR0", ""},
    {"~", "II RR VV MM QQ AA", ""},
    {"$", "RR VV QQ", ""},
    {";v", "VV PV MV QV AV IRR! RRI.", ""},
    {";p", "VP PP MP IRR! RRI.", ""},
    {";m", "MM QM AM CM VVVPM VPVP!", ""},
    {";q", "MQ QQ AQ IRRR!", ""},
    {";r", "MA QA AA RIRR!", ""},
    {";s", "MC CC IRR! RRI.", ""},
    {";u ;n", "VV MV", ""},
    {";t", "PP MP", ""},
    {";x ;y ;z", "VR PR", ""},
    {";w", "RR VR PR QR AR", ""},
    {";a", "AR", ""},
    {">> << ;sin ;cos ;tan ;asin ;acos ;atan ;ln ;exp ;sqrt", "RR", ""},
};

std::vector<std::string> Words(std::string_view text) {
  std::istringstream stream{std::string(text)};
  return {std::istream_iterator<std::string>(stream), {}};
}

void ExpectRules(const std::string& name, const Rule& rule) {
  std::map<std::string, char> expected;
  const std::vector<std::string> outcomes = Words(rule.outcomes);
  const bool alone = outcomes[0].size() == 2;
  for (const char top : Letters) {
    const char otherwise = rule.reported.find(top) == std::string_view::npos ? '.' : '!';
    for (const char beneath : Letters) {
      expected[alone ? std::string{top} : std::string{beneath, top}] = otherwise;
    }
  }
  for (const std::string& outcome : outcomes) {
    expected[outcome.substr(0, outcome.size() - 1)] = outcome.back();
  }
  for (const auto& [operands, result] : expected) ExpectRule(name, operands, result);
}

TEST(TypeRules, EveryOperatorOnEveryType) {
  for (const Rule& rule : Rules) {
    for (const std::string& name : Words(rule.names)) ExpectRules(name, rule);
  }
}

struct IntegerCase {
  std::int32_t beneath;  // stays beneath the result of "~"
  std::int32_t top;
  std::string_view name;
  std::optional<std::int32_t> result;  // none where the operator fails
};

constexpr std::int32_t Least = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t Most = std::numeric_limits<std::int32_t>::max();

constexpr IntegerCase IntegerCases[] = {
    {7, 2, "+", 9},    {Most, 1, "+", Least}, {7, 9, "-", -2},        {Least, 1, "-", Most},
    {-7, 3, "*", -21}, {Most, 2, "*", -2},    {65536, 65536, "*", 0}, {-7, 2, "/", -3},
    {7, -2, "/", -3},  {7, 0, "/", {}},       {Least, -1, "/", {}},   {-7, 2, "%", -1},
    {7, -2, "%", 1},   {7, 0, "%", {}},       {Least, -1, "%", {}},   {0, 0, "~", 0},
    {0, 7, "~", -7},   {0, -7, "~", 7},       {0, Most, "~", -Most},  {0, Least, "~", Least},
};

TEST(TypeRules, IntegersWrapAndDivideTowardsZero) {
  for (const auto& [beneath, top, name, result] : IntegerCases) {
    Calculator calculator;
    for (const std::int32_t operand : {beneath, top}) {
      calculator.interpreter.PushCopy(CaValue(operand));
    }
    const Written written = calculator.Run(std::string(name) + " # ");
    EXPECT_EQ(written.output, " " + std::to_string(result.value_or(top)) + "\n")
        << beneath << " " << top << " " << name;
    EXPECT_EQ(written.errors, result ? "" : "\a \n") << beneath << " " << top << " " << name;
  }
}

}  // namespace
