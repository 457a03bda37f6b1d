// Runs the programs of tests/programs, and what a list of programs cannot show.
//
// In those files a program stands on lines that begin with "= "; what it prints follows as it is
// printed, and then every line of its messages behind a "!", the line of a failure as BEL. Lines
// that begin with "[" are comments.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "calc/character_source.h"
#include "calc/exit_hook.h"
#include "calc/run.h"
#include "calc_harness.h"
#include "tests/folder.h"

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

int exitStatus = -1;

TEST(TopLevel, EndOfInputEmptiesTheEngineAndExitsThroughTheHook) {
  CaInterpreter interpreter;
  CaCharacterSource source("1 2 x : y 3 #\x04 4");
  interpreter.input = &source;
  const CaExitHook before = SetExitHook([](int status) { exitStatus = status; });
  testing::internal::CaptureStdout();
  RunTopLevel(interpreter);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  SetExitHook(before);
  EXPECT_EQ(exitStatus, 0);
  EXPECT_EQ(interpreter.Depth(), 0);
  EXPECT_EQ(interpreter.VariableCount(), 0);
  EXPECT_EQ(source.Read(), CaCharacterSource::End);
}

TEST(TopLevel, StandardInputStaysOpen) {
  const Folder folder;
  const std::string path = folder.Root() + "/input.txt";
  WriteTextFile(path.c_str(), "1 #\x04 2 #\n");
  ASSERT_NE(std::freopen(path.c_str(), "r", stdin), nullptr);
  const CaExitHook before = SetExitHook([](int) {});
  testing::internal::CaptureStdout();
  for (int run = 0; run < 2; ++run) {
    CaInterpreter interpreter;
    RunTopLevel(interpreter);
  }
  SetExitHook(before);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), " 2.000000\n");
}

}  // namespace
