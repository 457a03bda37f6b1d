#include "tools/kelcalc/options.h"

#include <gtest/gtest.h>

namespace {

using kelcalc::Choice;
using kelcalc::Options;
using kelcalc::Program;
using kelcalc::Task;

Options Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "kelcalc");
  return kelcalc::ParseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Options, ProgramsKeepTheirOrder) {
  const Options options = Parse({"a.3dc", "-e", "-1 #", "-e=1", "-", "--", "-e", "--stop"});
  ASSERT_EQ(options.error, "");
  const std::vector<std::pair<Program::Origin, std::string>> expected = {
      {Program::File, "a.3dc"},     {Program::Text, "-1 #"}, {Program::Text, "=1"},
      {Program::StandardInput, ""}, {Program::File, "-e"},   {Program::File, "--stop"},
  };
  ASSERT_EQ(options.programs.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(options.programs[i].origin, expected[i].first) << i;
    EXPECT_EQ(options.programs[i].text, expected[i].second) << i;
  }
}

TEST(Options, FirstTaskWins) {
  EXPECT_EQ(Parse({"--list", "--help"}).task, Task::List);
  EXPECT_EQ(Parse({"-V", "-h"}).task, Task::Version);
  EXPECT_EQ(Parse({"-h"}).task, Task::Help);
  EXPECT_EQ(Parse({"--help", "--explain", "+"}).task, Task::Help);
  const Options options = Parse({"--explain", "--", "--version"});
  EXPECT_EQ(options.task, Task::Explain);
  EXPECT_EQ(options.explained, "--");
}

TEST(Options, Flags) {
  const Options options =
      Parse({"-i", "--no-stack", "--no-where", "--strict", "--stop", "--digits=17"});
  ASSERT_EQ(options.error, "");
  EXPECT_TRUE(options.interactive && !options.showStack && options.strict && options.stop);
  EXPECT_EQ(options.where, Choice::Off);
  EXPECT_EQ(options.digits, 17);
}

TEST(Options, WrongOnesSayWhy) {
  const struct {
    std::vector<const char*> arguments;
    const char* error;
  } cases[] = {
      {{"--digits", "0"}, "--digits takes a number from 1 to 17, not '0'"},
      {{"--digits", "18"}, "--digits takes a number from 1 to 17, not '18'"},
      {{"--digits", "99999999999"}, "--digits takes a number from 1 to 17, not '99999999999'"},
      {{"--digits", "3x"}, "--digits takes a number from 1 to 17, not '3x'"},
      {{"--digits="}, "--digits takes a number from 1 to 17, not ''"},
      {{"--digits"}, "option --digits needs N"},
      {{"-e"}, "option -e needs TEXT"},
      {{"--strictly"}, "unknown option --strictly"},
      {{"-i1"}, "unknown option -i1"},
      {{"--stop=1"}, "unknown option --stop=1"},
      {{"-x", "--help"}, "unknown option -x"},
  };
  for (const auto& wrong : cases) EXPECT_EQ(Parse(wrong.arguments).error, wrong.error);
}

}  // namespace
