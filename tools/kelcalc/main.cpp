// kelcalc: runs programs from files, arguments and the standard input.

#include <cstddef>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "calc/character_source.h"
#include "calc/exit_hook.h"
#include "calc/interpreter.h"
#include "calc/reports.h"
#include "calc/run.h"
#include "tools/kelcalc/arguments.h"
#include "tools/kelcalc/output.h"

namespace {

/// Before it waits for more input it looks whether anybody still takes the output.
CaCharacterSource& WatchedInput() {
  static CaCharacterSource source(CaCharacterSource::Fill([](char* block, std::size_t size) {
    EndIfOutputFailed();
    return CaCharacterSource::ReadStandardInput(block, size);
  }));
  return source;
}

/// Lets a file be made executable: its first line may name the program that runs it.
void SkipInterpreterLine(CaCharacterSource& source) {
  if (!source.StartsWith("#!")) return;
  int c = source.Read();
  while (c != '\n' && c != CaCharacterSource::End) c = source.Read();
}

int RunNamedFile(CaInterpreter& interpreter, const std::string& path) {
  const std::unique_ptr<CaCharacterSource> source = CaCharacterSource::OpenFile(path.c_str());
  if (source == nullptr) return ReportUnopenedFile(interpreter, path.c_str());
  SkipInterpreterLine(*source);
  return RunSource(interpreter, *source);
}

int RunProgram(CaInterpreter& interpreter, const Arguments::Program& program) {
  switch (program.kind) {
    case Arguments::Kind::StandardInput:
      return RunSource(interpreter, WatchedInput());
    // The text ends like a line, so that its last operator is complete.
    case Arguments::Kind::Text:
      return RunText(interpreter, program.text + "\n", "-e");
    default:
      return RunNamedFile(interpreter, program.text);
  }
}

int Run(const std::vector<Arguments::Program>& programs) {
  CaInterpreter interpreter;
  if (programs.empty()) {
    SetExitHook(EndWithOutput);
    interpreter.input = &WatchedInput();
    RunTopLevel(interpreter);
  }
  int status = 0;
  for (const Arguments::Program& program : programs) {
    if (RunProgram(interpreter, program) == 0) status = 1;
  }
  return status;
}

int Refuse(const std::string& complaint) {
  std::fprintf(stderr, "kelcalc: %s\nTry 'kelcalc --help'.\n", complaint.c_str());
  return 2;
}

int Perform(const Arguments& arguments) {
  switch (arguments.task) {
    case Arguments::Task::ShowHelp:
      std::fputs(HelpText, stdout);
      return 0;
    case Arguments::Task::ShowVersion:
      std::puts("kelcalc " KEL_VERSION);
      return 0;
    case Arguments::Task::Refuse:
      return Refuse(arguments.complaint);
    default:
      return Run(arguments.programs);
  }
}

}  // namespace

int main(int count, char** words) {
  WatchOutput();
  int status = 1;
  try {
    status = Perform(ParseArguments(std::vector<std::string>(words + (count > 0), words + count)));
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "kelcalc: %s\n", problem.what());
  }
  EndWithOutput(status);
}
