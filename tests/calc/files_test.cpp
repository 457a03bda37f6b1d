// The file functions: names, the text that ;write makes, running it back, nesting.

#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/resource.h>
#endif

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <string_view>

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

// What is written, as the last row, runs back, which turns the order round.
TEST_F(Files, WriteReplacesTheFile) {
  constexpr std::string_view Rows[][2] = {
      {"zz zz : ", "zz : \n"},
      {R"("a\" 7 b : \"c" x : )", " \"a\" 7 b : \"c\"\nx : \n"},
      {"1 x : 2 y : 3 z : 4 y : ", " 4.000000\ny : \n 3.000000\nz : \n 1.000000\nx : \n"},
      {"", ""},
      {"m(1,0,0,5, 0,1,0,6, 0,0,1,7) m : s(1,1,2) s : ",
       " s(1.000000, 1.000000, 2.000000)\ns : \n"
       " m(     1.000,     0.000,     0.000,     5.000\n"
       "        0.000,     1.000,     0.000,     6.000\n"
       "        0.000,     0.000,     1.000,     7.000)\nm : \n"},
  };
  for (const auto& [program, expected] : Rows) {
    EXPECT_EQ(Calculator().Run(std::string(program) + "\"vars\" ;write ## ").errors, "");
    EXPECT_EQ(ReadTextFile("vars.3dc"), expected);
  }
  Calculator().Run("\"vars\" ;read \"turned\" ;write ");
  Calculator().Run("\"turned\" ;read \"again\" ;write ");
  EXPECT_EQ(ReadTextFile("again.3dc"), ReadTextFile("vars.3dc"));
}

// A file, a program that reads it, and the output. Whatever is on top afterwards is popped, be it
// the name of the file or not.
constexpr std::string_view ReadCases[][3] = {
    {"5", "\"f\" ;read ## ", " \"f\"\n"},
    {"\\ ", "1 2 \"f\" ;read ## ", " 1.000000\n"},
    {"zz : \n", "\"f\" ;read zz # ## ", " \"f\"\n"},
    {" \"a\" 7 b : \"c\"\nx : \n", "\"f\" ;read b # x # ", " 7.000000\n \"c\"\n"},
    {"2 1 < { 3", "\"f\" ;read 5 # } 6 # ", " 6.000000\n"},
    {"1 # \"g\" ;read x # \x04 3 # ", "2 x : \"g\" ;write 5 x : \"f\" ;read 4 # ",
     " 1.000000\n 2.000000\n 4.000000\n"},
};

TEST_F(Files, ReadRunsTheFile) {
  for (const auto& [file, program, output] : ReadCases) {
    folder.Put("f.3dc", std::string(file));
    EXPECT_EQ(Calculator().Run(program).output, output) << file;
  }
}

#ifndef _WIN32
rlimit sizeLimit{};

// The file is full at the first write and not at the close any more.
TEST_F(Files, WriteTellsOfAFullDiskAtAWrite) {
  getrlimit(RLIMIT_FSIZE, &sizeLimit);
  std::signal(SIGXFSZ, [](int) { setrlimit(RLIMIT_FSIZE, &sizeLimit); });
  std::string program;  // too long to be kept for the fuzzer, which would meet the limit
  for (const char* name : {"a", "b", "c", "d", "e"}) {
    program += "\"" + Repeat("a", 1000) + "\" " + name + " : ";
  }
  const rlimit none{0, sizeLimit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &none);
  EXPECT_EQ(calculator.Run(program + "\"full\" ;write ").errors, "\a \n");
  setrlimit(RLIMIT_FSIZE, &sizeLimit);
  std::signal(SIGXFSZ, SIG_DFL);
}

TEST_F(Files, WriteTellsOfAFullDiskAtTheClose) {
  EXPECT_EQ(calculator.Run("5 x : \"/dev/./full\" ;write # ").errors, "\a \n");
}
#endif

TEST_F(Files, NamesWithoutAPointGetTheExtension) {
  std::filesystem::create_directory("a.b");
  calculator.Run("5 x : \"vars\" ;write \"vars.txt\" ;write \"./out\" ;write \"a.b/vars\" ;write ");
  for (const char* path : {"vars.3dc", "vars.txt", "out", "a.b/vars"}) {
    EXPECT_EQ(ReadTextFile(path), " 5.000000\nx : \n") << path;
  }
}

TEST_F(Files, NamesAreCutAt255Characters) {
  const std::string name = Repeat("n", 300);
  const std::string kept = name.substr(0, 255) + ".3dc";
  EXPECT_EQ(calculator.Run("\"" + name + "\" ;read # ").errors,
            " Can't open file " + kept + "!\n\a \n");
}

TEST_F(Files, AFileThatReadsItselfEndsAtADepthAndUnwinds) {
  folder.Put("self.3dc", "n 1 + n : \"self\" ;read \"back\" # ");
  const Written written = calculator.Run("0 n : \"self\" ;read n # ## ");
  EXPECT_EQ(written.errors, " Can't open file self.3dc!\n\a \n");
  const auto depth = std::count(written.output.begin(), written.output.end(), 'b');
  EXPECT_GE(depth, 200);
  EXPECT_EQ(written.output, Repeat(" \"back\"\n", static_cast<int>(depth)) + " " +
                                std::to_string(depth) + ".000000\n \"self\"\n");
}

// The last one, because the limit stays.
TEST_F(Files, TenThousandReadsInOneRun) {
#ifndef _WIN32
  const rlimit few{64, 64};
  setrlimit(RLIMIT_NOFILE, &few);
#endif
  folder.Put("one.3dc", "n 1 + n : ");
  const Written written = calculator.Run("0 n : " + Repeat("\"one\" ;read ", 10000) + "n # ");
  EXPECT_EQ(written.output, " 10000.000000\n");
  EXPECT_EQ(written.errors, "");
}

}  // namespace
