// The file functions: names, the text that ;write makes, running it back, nesting.

#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/resource.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>

#include "calc/object.h"
#include "calc/run.h"
#include "calc_harness.h"
#include "tests/folder.h"

namespace {

/// Every test works in an empty folder of its own.
class Files : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::current_path(folder.Root()); }

  void TearDown() override { std::filesystem::current_path(home); }

  const Folder folder;
  const std::filesystem::path home = std::filesystem::current_path();
  Calculator calculator;
};

constexpr char OneOfEach[] =
    "-2.5 real : \"a b\" text : v(1,2,3) v : p(1,2,3) p : q(1,0,0,0) q : r(0,0,1,90) r : s(1,1,2) "
    "s : "
    "m(1,0,0,5, 0,1,0,6, 0,0,1,7) m : ";

TEST_F(Files, WriteHoldsOneRecordPerVariableMostRecentFirst) {
  EXPECT_EQ(calculator.Run(std::string(OneOfEach) + "none none : \"all\" ;write ## ").errors, "");
  EXPECT_EQ(ReadTextFile("all.3dc"),
            "none : \n"
            " m(     1.000,     0.000,     0.000,     5.000\n"
            "        0.000,     1.000,     0.000,     6.000\n"
            "        0.000,     0.000,     1.000,     7.000)\nm : \n"
            " s(1.000000, 1.000000, 2.000000)\ns : \n"
            " r(0.000000, 0.000000, 1.000000,   90.000000)\nr : \n"
            " q(1.000000,   0.000000, 0.000000, 0.000000)\nq : \n"
            " p(1.000000, 2.000000, 3.000000)\np : \n"
            " v(1.000000, 2.000000, 3.000000)\nv : \n"
            " \"a b\"\ntext : \n"
            " -2.500000\nreal : \n");
}

TEST_F(Files, RunningAWrittenFileBackReversesTheOrder) {
  calculator.Run(std::string(OneOfEach) + "\"first\" ;write ");
  Calculator other;
  const Written written = other.Run("\"first\" ;read \"second\" ;write \"second\" ;read ## ");
  EXPECT_EQ(written.output + written.errors, "");
  other.Run("\"third\" ;write ");
  EXPECT_NE(ReadTextFile("second.3dc"), ReadTextFile("first.3dc"));
  EXPECT_EQ(ReadTextFile("third.3dc"), ReadTextFile("first.3dc"));
  EXPECT_TRUE(ReadTextFile("second.3dc").starts_with(" -2.500000\nreal : \n \"a b\"\ntext : \n"));
}

TEST_F(Files, RandomValuesComeBackToThePrintedDigits) {
  std::mt19937_64 random(20240607);
  std::uniform_real_distribution<double> exponent(-8, 18);
  std::string program;
  for (int i = 0; i < 500; ++i) {
    const double value = std::pow(10, exponent(random)) * (i % 2 == 0 ? 1 : -1);
    program += std::to_string(value) + " x" + std::to_string(i) + " : ";
  }
  calculator.Run(program + "\"a\" ;write ");
  Calculator other;
  EXPECT_EQ(other.Run("\"a\" ;read \"b\" ;write \"b\" ;read \"c\" ;write ").errors, "");
  EXPECT_EQ(ReadTextFile("c.3dc"), ReadTextFile("a.3dc"));
}

TEST_F(Files, NamesWithoutAPointGetTheExtension) {
  std::filesystem::create_directory("a.b");
  calculator.Run("5 x : \"vars\" ;write \"vars.txt\" ;write \"./out\" ;write \"a.b/vars\" ;write ");
  for (const char* path : {"vars.3dc", "vars.txt", "out", "a.b/vars"}) {
    EXPECT_EQ(ReadTextFile(path), " 5.000000\nx : \n") << path;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 4);
}

TEST_F(Files, NamesAreCutAt255Characters) {
  const std::string name = Repeat("n", 300);
  const std::string kept = name.substr(0, 255) + ".3dc";
  EXPECT_EQ(calculator.Run("\"" + name + "\" ;read # ").errors,
            " Can't open file " + kept + "!\n\a \n");
  const std::string points = "./" + Repeat("./", 150) + "deep";
  EXPECT_EQ(calculator.Run("\"" + points + "\" ;read # ").errors,
            " Can't open file " + points.substr(0, 255) + "!\n\a \n");
}

TEST_F(Files, NothingToWriteMakesAnEmptyFile) {
  WriteTextFile("vars.3dc", "old text");
  EXPECT_EQ(calculator.Run("\"vars\" ;write ## ").errors, "");
  EXPECT_EQ(ReadTextFile("vars.3dc"), "");
}

TEST_F(Files, FailuresLeaveTheName) {
  const Written written =
      calculator.Run("\"no/such\" ;write \"no/such\" ;read 5 ;write 6 ;read ## ");
  EXPECT_EQ(written.output, " \"no/such\"\n \"no/such\"\n 5.000000\n 6.000000\n");
  EXPECT_EQ(written.errors, "\a \n Can't open file no/such.3dc!\n\a \n\a \n\a \n");
}

TEST_F(Files, ReadPopsWhateverIsOnTopAfterwards) {
  WriteTextFile("five.3dc", "5");
  EXPECT_EQ(calculator.Run("\"five\" ;read ## ").output, " \"five\"\n");
  WriteTextFile("drop.3dc", "\\ ");
  EXPECT_EQ(calculator.Run("1 2 \"drop\" ;read ## ").output, " 1.000000\n");
  calculator.Run("zz zz : \"z\" ;write \\\\ ");
  Calculator other;
  EXPECT_EQ(other.Run("\"z\" ;read zz # ## ").output, " \"z\"\n");
}

TEST_F(Files, SkippingOutlivesTheFile) {
  WriteTextFile("skip.3dc", "2 1 < { 3");
  EXPECT_EQ(calculator.Run("\"skip\" ;read 5 # } 6 # ").output, " 6.000000\n");
}

TEST_F(Files, QuotationMarksInTextsDoNotComeBack) {
  calculator.Run("\"a\\\" 7 b : \\\"c\" x : \"t\" ;write ");
  EXPECT_EQ(ReadTextFile("t.3dc"), " \"a\" 7 b : \"c\"\nx : \n");
  Calculator other;
  EXPECT_EQ(other.Run("\"t\" ;read b # x # ").output, " 7.000000\n \"c\"\n");
}

TEST_F(Files, IntegersComeBackAsReals) {
  calculator.interpreter.PushCopy(CaValue(std::int32_t{7}));
  calculator.Run("x : \"i\" ;write ");
  EXPECT_EQ(ReadTextFile("i.3dc"), " 7\nx : \n");
  EXPECT_EQ(calculator.Run("\"i\" ;read x # ").output, " 7.000000\n");
}

TEST_F(Files, RunFileRestoresItsCaller) {
  WriteTextFile("inner.txt", "\"inner\" # ");
  WriteTextFile("outer.txt", "1 # \"inner.txt\" ;read 2 # \x04 3 # ");
  testing::internal::CaptureStdout();
  EXPECT_EQ(RunFile(calculator.interpreter, "outer.txt"), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), " 1.000000\n \"inner\"\n 2.000000\n");
  testing::internal::CaptureStderr();
  EXPECT_EQ(RunFile(calculator.interpreter, "missing.txt"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), " Can't open file missing.txt!\n");
  EXPECT_EQ(calculator.interpreter.nestDepth, 0);
}

TEST_F(Files, TenThousandReadsInOneRun) {
#ifndef _WIN32
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few{64, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
#endif
  WriteTextFile("one.3dc", "n 1 + n : ");
  const Written written = calculator.Run("0 n : " + Repeat("\"one\" ;read ", 10000) + "n # ");
#ifndef _WIN32
  setrlimit(RLIMIT_NOFILE, &before);
#endif
  EXPECT_EQ(written.output, " 10000.000000\n");
  EXPECT_EQ(written.errors, "");
}

TEST_F(Files, AFileThatReadsItselfEndsAtADepthAndUnwinds) {
  WriteTextFile("self.3dc", "n 1 + n : \"self\" ;read \"back\" # ");
  const Written written = calculator.Run("0 n : \"self\" ;read n # ## ");
  EXPECT_EQ(written.errors, " Can't open file self.3dc!\n\a \n");
  const auto depth = std::count(written.output.begin(), written.output.end(), 'b');
  EXPECT_GE(depth, 200);
  EXPECT_EQ(written.output, Repeat(" \"back\"\n", static_cast<int>(depth)) + " " +
                                std::to_string(depth) + ".000000\n \"self\"\n");
}

}  // namespace
