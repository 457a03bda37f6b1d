#pragma once

#include <string>
#include <vector>

namespace kelcalc {

/// What the command line asks for beside running programs; the first that is met wins.
enum class Task { Run, Help, Version, List, Explain };

/// One thing to run, in the order of the command line.
struct Program {
  enum Origin { File, Text, StandardInput };
  Origin origin;
  std::string text;  // the path or the program; empty for standard input
};

/// Yes or no, or whatever fits where kelcalc runs.
enum class Choice { Default, On, Off };

/// What is chosen, where a session makes the difference.
inline bool Chosen(Choice choice, bool inSession) {
  return choice == Choice::On || (choice == Choice::Default && inSession);
}

struct Options {
  Task task = Task::Run;
  std::string explained;          // the name for Task::Explain
  std::vector<Program> programs;  // none: standard input
  bool interactive = false;
  bool showStack = true;
  Choice where = Choice::Default;
  Choice warn = Choice::Default;
  bool strict = false;
  bool stop = false;
  int digits = 0;                     // 0: the language's own form
  bool exact = false;                 // files of variables keep every digit
  std::string json;                   // where stack and variables go at the end; -: std. output
  std::vector<std::string> pictures;  // files to write when the programs have ended
  std::string picturesFrom;           // the point where their vectors start; empty: the origin

  std::string error;  // not empty: the command line is wrong, and this says why
};

Options ParseOptions(int count, const char* const* arguments);

/// The text that --help prints.
std::string UsageText();

}  // namespace kelcalc
