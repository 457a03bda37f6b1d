#pragma once

#include <string>
#include <vector>

/// The command line of kelcalc, taken apart.
struct Arguments {
  enum class Task { Run, ShowHelp, ShowVersion, Refuse };
  enum class Kind { File, Text, StandardInput };

  struct Program {
    Kind kind;
    std::string text;  // a path or a program
  };

  Task task = Task::Run;
  std::vector<Program> programs;  // in the order to run them; none means standard input
  std::string complaint;          // why the arguments are refused, a clause without a newline
};

/// `arguments` without the name of the command.
Arguments ParseArguments(const std::vector<std::string>& arguments);

/// What `--help` prints.
extern const char* const HelpText;
