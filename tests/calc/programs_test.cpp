// Runs the programs of tests/programs, and what a list of programs cannot show.
//
// In those files a program stands on lines that begin with "= "; what it prints follows as it is
// printed, and then every line of its messages behind a "!", the line of a failure as BEL. Lines
// that begin with "[" are comments.

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "calc/character_source.h"
#include "calc/failure_observer.h"
#include "calc/run.h"
#include "calc_harness.h"

namespace {

struct StoredProgram {
  std::string text;
  std::string output;
  std::string errors;
};

std::vector<StoredProgram> ReadPrograms(const std::string& name) {
  std::vector<StoredProgram> programs;
  std::ifstream file(std::string(KEL_PROGRAMS) + "/" + name);
  bool inText = false;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '[') {
      inText = false;
      continue;
    }
    if (line[0] == '=') {
      if (!inText) programs.emplace_back();
      programs.back().text += (inText ? "\n" : "") + line.substr(2);
    } else if (line[0] == '!') {
      programs.back().errors += (line == "!BEL" ? "\a " : line.substr(1)) + "\n";
    } else {
      programs.back().output += line + "\n";
    }
    inText = line[0] == '=';
  }
  return programs;
}

class Programs : public testing::TestWithParam<const char*> {};

TEST_P(Programs, PrintWhatStandsBelowThem) {
  const std::vector<StoredProgram> programs = ReadPrograms(GetParam() + std::string(".txt"));
  EXPECT_GE(programs.size(), 25U);
  for (const StoredProgram& program : programs) {
    const std::string text = program.text + " ";
    const Program row{text, program.output, program.errors};
    RunPrograms({&row, 1});
  }
}

INSTANTIATE_TEST_SUITE_P(All, Programs,
                         testing::Values("constants", "dispatch", "functions", "operators",
                                         "reader"),
                         [](const auto& row) { return std::string(row.param); });

// "nan" is made of 0 0 /: with it everything holds except the exact equality.
constexpr const char* HoldingConditions[] = {
    "1 2 <",        "1 2 <=",        "1 1 <=",       "2 1 >",       "2 1 >=",
    "1 1 >=",       "1 1 =",         "0 -0 =",       "1 2 ~=",      "1 2 1 ==",
    "2 1 1 ==",     "1 2 0.5 ~==",   "1 1 -1 ~==",   "1 x : x 2 <", "0.1 0.2 + 0.3 1e-9 ==",
    "1 0 / ' =",    "1 0 / ' 1 ==",  "0 0 / 1 <",    "1 0 0 / <",   "0 0 / 1 <=",
    "0 0 / 1 >",    "1 0 0 / >=",    "0 0 / 1 ~=",   "0 0 / ' ~=",  "0 0 / 1 1 ==",
    "1 1 0 0 / ==", "0 0 / 1 1 ~==", "1 1 0 0 / ~=="};
constexpr const char* FailingConditions[] = {
    "2 1 <",     "1 1 <",     "2 1 <=",    "1 2 >",          "1 1 >",     "1 2 >=",
    "1 2 =",     "1 1 ~=",    "0 -0 ~=",   "1 2 0.5 ==",     "1 2 1 ~==", "2 1 1 ~==",
    "1 1 -1 ==", "0 0 / ' =", "0 0 / 1 =", "0.1 0.2 + 0.3 ="};

TEST(Conditions, SkipTheNextOperatorWhenFalse) {
  for (const std::string condition : HoldingConditions) {
    Calculator calculator;
    EXPECT_EQ(calculator.Run("3 " + condition + " 7 # ## ").output, " 7.000000\n 3.000000\n")
        << condition;
  }
  for (const std::string condition : FailingConditions) {
    Calculator calculator;
    EXPECT_EQ(calculator.Run("3 " + condition + " 7 # ## ").output, " 3.000000\n") << condition;
  }
}

TEST(TopLevel, TheEndEmptiesTheEngineAndClosesTheInput) {
  CaInterpreter interpreter;
  CaCharacterSource source("1 2 x : y 3 #\x04 4");
  interpreter.input = &source;
  testing::internal::CaptureStdout();
  RunTopLevel(interpreter);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(interpreter.Depth(), 0);
  EXPECT_EQ(interpreter.VariableCount(), 0);
  EXPECT_EQ(source.Read(), CaCharacterSource::End);
}

/// Asks for an interruption as soon as something fails.
struct Interrupter final : CaFailureObserver {
  void Failed(const CaInterpreter&, CaFailure, const char*, const CaOperatorEntry*) override {
    requested = 1;
  }

  std::atomic<int> requested = 0;
};

TEST(Interruption, StopsBetweenTwoTokens) {
  Interrupter interrupter;
  Calculator calculator;
  calculator.interpreter.observer = &interrupter;
  calculator.interpreter.interruptRequested = &interrupter.requested;
  EXPECT_THROW(RunText(calculator.interpreter, "1 2 ;a 3 ", "test"), CaInterruption);
  EXPECT_EQ(calculator.interpreter.Depth(), 2);
  EXPECT_EQ(calculator.interpreter.nestDepth, 0);
}

/// Every token is cut in two by the end of a block somewhere; the last block holds all.
TEST(CharacterSource, BlocksMayEndAnywhere) {
  for (const std::size_t size : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 1000U}) {
    std::string all(300, '\n');
    all += "[ c ] 12.5e1 ab 3 : \"x y\" # v(1, -2,3) # ab # 2 1 >= # 5 -- - ## ";
    std::string_view text = all;
    CaCharacterSource source([&](char* block, std::size_t) {
      const std::size_t count = text.copy(block, size);
      text.remove_prefix(count);
      return static_cast<std::ptrdiff_t>(count);
    });
    Calculator calculator;
    calculator.interpreter.errors = stdout;
    testing::internal::CaptureStdout();
    RunSource(calculator.interpreter, source);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\a \n \"x y\"\n v(1.000000, -2.000000, 3.000000)\n 3.000000\n"
              "\nUnrecognized operator --\n"
              "\nType mismatch for operator -\n\a \n 125.000000\n 5.000000\n")
        << size;
    EXPECT_EQ(source.MarkedPosition().line, 301);
    EXPECT_EQ(source.MarkedPosition().column, 63);
  }
}

}  // namespace
