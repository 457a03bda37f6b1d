// Runs the programs of tests/programs, and what a list of programs cannot show.
//
// In those files a program stands on lines that begin with "= "; what it prints follows as it is
// printed, and then every line of its messages behind a "!", the line of a failure as BEL. Lines
// that begin with "[" are comments.

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "calc/character_source.h"
#include "calc/run.h"
#include "calc_harness.h"

namespace {

std::vector<Program> ReadPrograms(const std::string& name) {
  std::vector<Program> programs;
  std::ifstream file(std::string(KEL_PROGRAMS) + "/" + name);
  bool inText = false;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '[') {
      inText = false;
      continue;
    }
    if (line[0] == '=') {
      if (!inText) programs.emplace_back();
      programs.back().text += line.substr(2) + "\n";
    } else if (line[0] == '!') {
      programs.back().errors += (line == "!BEL" ? "\a " : line.substr(1)) + "\n";
    } else {
      programs.back().output += line + "\n";
    }
    inText = line[0] == '=';
  }
  return programs;
}

TEST(Programs, PrintWhatStandsBelowThem) {
  for (const std::string name : {"constants", "dispatch", "functions", "operators", "reader"}) {
    const std::vector<Program> programs = ReadPrograms(name + ".txt");
    EXPECT_GE(programs.size(), 25U) << name;
    for (const Program& program : programs) RunProgram(program);
  }
}

struct Condition {
  const char* name;
  bool (*skips)(double a, double b);
};

// A not-a-number makes everything hold but "=".
constexpr Condition Conditions[] = {
    {"<", [](double a, double b) { return a >= b; }},
    {"<=", [](double a, double b) { return a > b; }},
    {">", [](double a, double b) { return a <= b; }},
    {">=", [](double a, double b) { return a < b; }},
    {"=", [](double a, double b) { return !(a == b); }},
    {"~=", [](double a, double b) { return a == b; }},
    {"1 ==", [](double a, double b) { return std::fabs(a - b) > 1; }},
    {"1 ~==", [](double a, double b) { return std::fabs(a - b) <= 1; }},
    {"-1 ==", [](double a, double b) { return std::fabs(a - b) > -1; }},
    {"0 0 / ==", [](double, double) { return false; }},
    {"0 0 / ~==", [](double, double) { return false; }},
};

TEST(Conditions, SkipTheNextOperatorWhenFalse) {
  using Limits = std::numeric_limits<double>;
  const double numbers[] = {0, -0.0, 1, 2, 0.3, 0.1 + 0.2, Limits::infinity(), Limits::quiet_NaN()};
  for (const auto& [name, skips] : Conditions) {
    for (const double a : numbers) {
      for (const double b : numbers) {
        Calculator calculator;
        for (const double operand : {a, b}) calculator.interpreter.PushCopy(CaValue(operand));
        const std::string output = calculator.Run(std::string(name) + " 7 # ## ").output;
        EXPECT_EQ(output, skips(a, b) ? "" : " 7.000000\n") << a << " " << b << " " << name;
      }
    }
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

TEST(CharacterSource, CountsLinesInBlocksOfAnySize) {
  const std::string text = Repeat("\n", 300) + "[ c ] 12.5e1 ab ";
  for (const std::size_t size : {1U, 2U, 3U, 7U, 8U, 1000U}) {
    CaCharacterSource source = InBlocks(text, size);
    Calculator calculator;
    RunSource(calculator.interpreter, source);
    EXPECT_EQ(source.MarkedPosition().line, 301) << size;
    EXPECT_EQ(source.MarkedPosition().column, 14) << size;
  }
}

}  // namespace
