// The interpreter loop: variables, skipping and blocks.

#include <gtest/gtest.h>

#include <string>

#include "calc_harness.h"

namespace {

constexpr Program Variables[] = {
    {"5 x : x # ", " 5.000000\n", ""},
    {"x # x : ", "", "\a \n"},
    {"5 x : 6 y : 7 x : x # y # ", " 7.000000\n 6.000000\n", ""},
    {"5 7 : ## ", " 5.000000\n 7.000000\n", "\a \n"},
    {"\"text\" s : s # s # ", " \"text\"\n \"text\"\n", ""},
    {"\"a\" s : s \"b\" s : # s # ", " \"a\"\n \"b\"\n", ""},
    {"5 x : zz x : x # ", "", ""},
    {"5 x : x 9 '' ## ", " 5.000000\n", "\a \n"},
    // A name stands for the value it had when it was read.
    {"5 x : x 6 x : # ", " 5.000000\n", ""},
    // Values that were taken from a variable have lost its name.
    {"5 x : 6 x ' : # # # ", " 5.000000\n 5.000000\n 6.000000\n", "\a \n"},
    {"5 x : x 9 | : ## ", " 9.000000\n 5.000000\n", "\a \n"},
    {"5 x : 9 x | : ## ", " 5.000000\n 9.000000\n", "\a \n"},
    {"5 x : 8 x 0 '' : ## ", " 8.000000\n 5.000000\n 5.000000\n", "\a \n"},
    // Functions that leave their operand alone leave the name as well.
    {"v(1,2,3) x : 9 x ;v : x # ", " 9.000000\n", ""},
    {"p(1,2,3) x : 9 x ;t : x # ", " 9.000000\n", ""},
    {"p(1,2,3) x : 9 x ;x : ## ", " 9.000000\n 1.000000\n", "\a \n"},
};

constexpr Program Skipping[] = {
    {"1 2 < 5 # ", " 5.000000\n", ""},
    {"9 2 1 < 5 # # ", " 9.000000\n", ""},
    {"9 2 1 < 5 6 + # ", " 9.000000\n", ""},
    {"9 2 1 < x \"a\" v(1,2,3) # # ", " 9.000000\n", ""},
    {"2 1 < ;build 5 # ", " 5.000000\n", ""},
    {"9 2 1 < 1 2 < 5 # # ", " 5.000000\n 9.000000\n", ""},
    {"2 1 < ;nope # 5 # ", " 5.000000\n", "\nUnrecognized operator nope\n"},
    {"2 1 < &&& # 5 # ", " 5.000000\n", "\nUnrecognized operator &&&\n"},
    {"2 1 < v(1) # 5 # ", " 5.000000\n", "Problem in format of compound constant v\n"},
    {"2 1 < x : x # 5 # ", " 5.000000\n", ""},
};

constexpr Program Blocks[] = {
    {"2 1 < { 1 { 2 } 3 } 4 ## ", " 4.000000\n", ""},
    {"2 1 < { 1 { 2 }} 4 ## ", " 4.000000\n", ""},
    {"2 1 < { { { }} 4 ## ", " 4.000000\n", ""},
    {"} }} { 5 # { } } ", " 5.000000\n", ""},
    {"1 2 < { 5 # } 6 # ", " 5.000000\n 6.000000\n", ""},
    {"2 1 < { 9 8 < } 5 # ", " 5.000000\n", ""},
    {"2 1 < { 1 # ;build # } # } 6 # ", " 6.000000\n", ""},
    {"2 1 < } 5 # ", " 5.000000\n", ""},
    {"2 1 < }} 5 # ", " 5.000000\n", ""},
    {"2 1 < 7 8 { 1 # } 5 # ", " 5.000000\n", ""},
    {"3 x : x 2 < { \"low\" # } x 2 >= { \"high\" # } ", " \"high\"\n", ""},
};

struct Condition {
  const char* text;
  bool holds;
};

constexpr Condition Conditions[] = {
    {"1 2 <", true},          {"2 1 <", false},          {"1 1 <", false},
    {"1 2 <=", true},         {"2 1 <=", false},         {"1 1 <=", true},
    {"1 2 >", false},         {"2 1 >", true},           {"1 1 >", false},
    {"1 2 >=", false},        {"2 1 >=", true},          {"1 1 >=", true},
    {"1 1 =", true},          {"1 2 =", false},          {"0 -0 =", true},
    {"1 1 ~=", false},        {"1 2 ~=", true},          {"0.1 0.2 + 0.3 =", false},
    {"1 2 1 ==", true},       {"2 1 1 ==", true},        {"1 2 0.5 ==", false},
    {"1 2 1 ~==", false},     {"2 1 1 ~==", false},      {"1 2 0.5 ~==", true},
    {"1 1 -1 ==", false},     {"1 1 -1 ~==", true},      {"0.1 0.2 + 0.3 1e-9 ==", true},
    {"1 x : x 2 <", true},    {"1 0 / 1 0 / =", true},   {"1 0 / ' 1 ==", true},
    // With a not-a-number everything holds except the exact equality.
    {"0 0 / 1 <", true},      {"1 0 0 / <=", true},      {"0 0 / 1 >", true},
    {"1 0 0 / >=", true},     {"0 0 / ' =", false},      {"0 0 / 1 ~=", true},
    {"0 0 / 1 1 ==", true},   {"1 1 0 0 / ==", true},    {"0 0 / 1 1 ~==", true},
    {"1 1 0 0 / ~==", true},
};

constexpr Program FailedConditions[] = {
    {"\"a\" 1 < 7 # ## ", " 7.000000\n \"a\"\n 1.000000\n", "\a \n"},
    {"1 < 7 # ## ", " 7.000000\n 1.000000\n", "\a \n"},
    {"1 2 == 7 # ## ", " 7.000000\n 1.000000\n 2.000000\n", "\a \n"},
    {"\"a\" 1 2 ~== 7 # ## ", " 7.000000\n \"a\"\n 1.000000\n 2.000000\n", "\a \n"},
};

TEST(Dispatch, Variables) { RunPrograms(Variables); }
TEST(Dispatch, Skipping) { RunPrograms(Skipping); }
TEST(Dispatch, Blocks) { RunPrograms(Blocks); }

TEST(Dispatch, Conditions) {
  for (const Condition& condition : Conditions) {
    Calculator calculator;
    const Written written = calculator.Run("3 " + std::string(condition.text) + " 7 # ## ");
    const char* expected = condition.holds ? " 7.000000\n 3.000000\n" : " 3.000000\n";
    EXPECT_EQ(written.output, expected) << condition.text;
    EXPECT_EQ(written.errors, "") << condition.text;
  }
}

TEST(Dispatch, FailedConditionsSkipNothing) { RunPrograms(FailedConditions); }

}  // namespace
