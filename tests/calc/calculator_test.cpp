#include <gtest/gtest.h>

#include <kelcalc.h>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/folder.h"

namespace {

using kel::Calculator;
using kel::Outcome;
using kel::Value;

/// A calculator that writes down all that it is told.
struct Recorder {
  Recorder() {
    calculator.OnOutput([this](std::string_view text) { told += text; });
    calculator.OnMessage([this](std::string_view text) { told += text; });
    calculator.OnFailure([this](const kel::Failure& failure) { failures.push_back(failure); });
  }

  Calculator calculator;
  std::string told;
  std::vector<kel::Failure> failures;
};

TEST(Calculator, TellsAllInItsOrderAndPrintsNothingItself) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Recorder recorder;
  const Outcome outcome = recorder.calculator.Run(
      "1 # \"a\" 2 + 3 #\n q(1,0,0,0) 0 / # nosuch ;sine \"no file\" ;read", "text");
  EXPECT_EQ(
      " 1.000000\n\nType mismatch for operator +\n\a \n 3.000000\n"
      "Quaternion divided by zero!\n q(1.000000,   0.000000, 0.000000, 0.000000)\n"
      "\nUnrecognized operator sine\n Can't open file no file.3dc!\n\a \n",
      recorder.told);
  EXPECT_EQ("", testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr());
  EXPECT_FALSE(outcome);
  EXPECT_EQ(Outcome::End::Complete, outcome.end);
  EXPECT_EQ("4 failures", outcome.Text());
  ASSERT_EQ(4u, recorder.failures.size());
  const kel::Failure& sum = recorder.failures[0];
  EXPECT_EQ("text:1:11:+", sum.program + ":" + std::to_string(sum.line) + ":" +
                               std::to_string(sum.column) + ":" + sum.token);
  EXPECT_NE(std::string::npos, sum.message.find("(string, real)")) << sum.message;
  EXPECT_NE(sum.rules.end(), std::find(sum.rules.begin(), sum.rules.end(), "point+vector"));
  EXPECT_EQ("Quaternion divided by zero!", recorder.failures[1].message);
  EXPECT_EQ(";sine", recorder.failures[2].token);
  EXPECT_EQ(2, recorder.failures[2].line);
  EXPECT_EQ("1 failure", recorder.calculator.Run("1 \"open").Text());
}

TEST(Calculator, TakesAndGivesValuesOfAllTypes) {
  const struct {
    Value value;
    const char* program;
  } Rows[] = {
      {Value::Text("a \"b\""), R"("a \"b\"")"},
      {Value::Real(-std::numeric_limits<double>::infinity()), "-1 0 /"},
      {Value::Vector(1, 2, 3), "v(1,2,3)"},
      {Value::Point(1, 2, 3), "p(1,2,3)"},
      {Value::Matrix({1, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3}), "m(1,2,3,4, 5,6,7,8, 9,1,2,3)"},
      {Value::Quaternion(1, 2, 3, 4), "q(1,2,3,4)"},
      {Value::Rotation(1, 2, 3, 4), "r(1,2,3,4)"},
      {Value::Scale(1, 2, 3), "s(1,2,3)"},
      {Value::Integer(-7), ""},
      {Value(), ""},
  };
  for (const auto& row : Rows) {
    Calculator calculator;
    calculator.Push(row.value);
    EXPECT_TRUE(calculator.Run(row.program));
    EXPECT_TRUE(calculator.Peek(0) == row.value) << row.program;
    ASSERT_TRUE(calculator.Set("x_1", calculator.Peek(0)));
    EXPECT_TRUE(calculator.Get("x_1") == row.value) << row.program;
  }
}

TEST(Calculator, KeepsStackVariablesAndSkipping) {
  Recorder recorder;
  Calculator& calculator = recorder.calculator;
  EXPECT_TRUE(calculator.Run("1 a : 2 b : 3 a : 5 6 2 1 < {"));
  EXPECT_TRUE(calculator.Run("7 } 8"));
  EXPECT_EQ((std::vector<std::string>{"a", "b"}), calculator.Names());
  EXPECT_EQ(3u, calculator.Depth());
  EXPECT_TRUE(calculator.Peek(2) == Value::Real(5));
  EXPECT_TRUE(calculator.Peek(3) == Value());
  calculator.Pop(9);
  EXPECT_EQ(0u, calculator.Depth());
  EXPECT_FALSE(calculator.Get("c"));
  for (const std::string& name : {std::string(), std::string("_a"), std::string("a b"),
                                  std::string("a\0b", 3), std::string(256, 'a')}) {
    EXPECT_FALSE(calculator.Set(name, Value::Real(1))) << name;
  }
  EXPECT_TRUE(calculator.Run("2 1 <"));
  calculator.Clear();
  EXPECT_TRUE(calculator.Names().empty());
  EXPECT_TRUE(calculator.Run("4 #"));
  EXPECT_EQ(" 4.000000\n", recorder.told);
}

TEST(Calculator, EndsWhereItIsTold) {
  Calculator calculator;
  calculator.LimitSteps(3);
  EXPECT_EQ(Outcome::End::OutOfSteps, calculator.Run("1 2 3 4").end);
  EXPECT_EQ(Outcome::End::Complete, calculator.Run("4 5 6").end);
  calculator.LimitSteps(0);
  calculator.Interrupt();
  EXPECT_EQ(Outcome::End::Interrupted, calculator.Run("7").end);
  EXPECT_EQ(6u, calculator.Depth());

  // From another thread, in the middle of a run.
  calculator.OnFailure(
      [&](const kel::Failure&) { std::thread([&] { calculator.Interrupt(); }).join(); });
  EXPECT_EQ(Outcome::End::Interrupted, calculator.Run("\\\\ \"a\" 1 + 2").end);
  EXPECT_EQ(2u, calculator.Depth());

  EXPECT_EQ("No such file or directory", calculator.RunFile("/no/such.3dc").Text());
  EXPECT_EQ(Outcome::End::Unopened, calculator.RunFile("/").end);
}

TEST(Calculator, RunsWhatComesInPieces) {
  const char* const pieces[] = {"1 [", " a ] 2 # \n 3 ", nullptr, "\n nosuch(", "ERROR", "4 "};
  const char* const* next = pieces;
  kel::Source source(
      [&](char* block, std::size_t) {
        const std::string_view piece = *next == nullptr ? "" : *next;
        ++next;
        if (piece.empty()) throw kel::Interruption();
        if (piece == "ERROR") return std::ptrdiff_t{-EIO};
        return static_cast<std::ptrdiff_t>(piece.copy(block, piece.size()));
      },
      "pieces");
  Recorder recorder;
  EXPECT_EQ(Outcome::End::Interrupted, recorder.calculator.Run(source).end);
  EXPECT_EQ(" 2.000000\n", recorder.told);
  EXPECT_EQ(2u, recorder.calculator.Depth());
  const Outcome outcome = recorder.calculator.Run(source);
  EXPECT_EQ("Input/output error; 1 failure", outcome.Text());
  EXPECT_EQ(3, recorder.failures.at(0).line);

  const Folder folder;
  const std::string script = folder.Put("script.3dc", "#!/usr/bin/env kelcalc\n5 x : \n");
  EXPECT_TRUE(recorder.calculator.RunFile(script));
  EXPECT_TRUE(recorder.calculator.Get("x") == Value::Real(5));
}

TEST(Calculator, PassesOnWhatACallbackThrows) {
  Calculator calculator;
  Outcome inner;
  calculator.OnOutput([&](std::string_view) {
    inner = calculator.Run("5");
    throw std::runtime_error("enough");
  });
  EXPECT_THROW(calculator.Run("1 # 2"), std::runtime_error);
  EXPECT_EQ(Outcome::End::Refused, inner.end);
  calculator.OnOutput(nullptr);
  EXPECT_TRUE(calculator.Run("3 #"));
}

// Each tells what one tells alone.
TEST(Calculator, ServesEachThreadByItself) {
  const auto run = [](Recorder& recorder, const std::string& number) {
    const std::string program = "\"t\" t" + number + " : " + number +
                                " x : x 90 * ;sin m(2,0,0,0, 0,2,0,0, 0,0,2,0) ~ v(1,2,3) * ;y + #"
                                " q(0,0,0,0) ~ \\ v(0,0,0) 0 / \\ nosuch +";
    for (int times = 0; times < 200; ++times) recorder.calculator.Run(program);
  };
  std::vector<std::thread> threads;
  std::vector<Recorder> recorders(4);
  for (std::size_t i = 0; i < recorders.size(); ++i) {
    threads.emplace_back([&, i] { run(recorders[i], std::to_string(i)); });
  }
  for (std::size_t i = 0; i < recorders.size(); ++i) {
    threads[i].join();
    Recorder alone;
    run(alone, std::to_string(i));
    EXPECT_EQ(alone.told, recorders[i].told);
    EXPECT_EQ(alone.calculator.Names(), recorders[i].calculator.Names());
  }
}

}  // namespace
