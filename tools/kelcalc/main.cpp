// kelcalc: runs programs from files, arguments, the standard input and the keyboard.

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
#include "tools/kelcalc/failure_report.h"
#include "tools/kelcalc/number_style.h"
#include "tools/kelcalc/options.h"
#include "tools/kelcalc/output.h"
#include "tools/kelcalc/reference.h"
#include "tools/kelcalc/session.h"
#include "tools/kelcalc/stack_display.h"

namespace kelcalc {
namespace {

/// Before it waits for more input it looks whether anybody still takes the output.
CaCharacterSource& WatchedInput() {
  static CaCharacterSource source(CaCharacterSource::Fill([](char* block, std::size_t size) {
    EndIfOutputFailed();
    return CaCharacterSource::ReadStandardInput(block, size);
  }));
  source.name = "<stdin>";
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

int RunProgram(CaInterpreter& interpreter, const Program& program) {
  switch (program.origin) {
    case Program::StandardInput:
      return RunSource(interpreter, WatchedInput());
    // The text ends like a line, so that its last operator is complete.
    case Program::Text:
      return RunText(interpreter, program.text + "\n", "-e");
    default:
      return RunNamedFile(interpreter, program.text);
  }
}

int RunPrograms(CaInterpreter& interpreter, const std::vector<Program>& programs) {
  int status = 0;
  for (const Program& program : programs) {
    if (RunProgram(interpreter, program) == 0) status = 1;
  }
  return status;
}

/// Runs the interpreter's input to its end, which empties the interpreter.
void RunInput(CaInterpreter& interpreter) {
  interpreter.input = &WatchedInput();
  RunTopLevel(interpreter);
}

int Run(const Options& options) {
  const bool session = options.interactive || (options.programs.empty() && AtTerminal());
  const bool colour = session && ColoursWanted();
  FailureReport report(
      {.where = options.where == Choice::On || (session && options.where == Choice::Default),
       .stop = options.stop,
       .colour = colour});
  SetExitHook([](int) {});  // the end of the input returns to here

  CaInterpreter interpreter;
  if (options.strict || options.stop || report.SaysWhere()) interpreter.observer = &report;
  if (options.digits > 0) SetShownDigits(interpreter, options.digits);
  int status = RunPrograms(interpreter, options.programs);
  if (session) {
    RunSession(
        interpreter, {.showStack = options.showStack},
        {.digits = options.digits > 0 ? options.digits : DisplayStyle().digits, .colour = colour});
  } else if (options.programs.empty()) {
    RunInput(interpreter);
  }
  if (options.strict && report.Count() > 0) status = 1;
  return status;
}

int Refuse(const std::string& complaint) {
  std::fprintf(stderr, "kelcalc: %s\nTry 'kelcalc --help'.\n", complaint.c_str());
  return 2;
}

int Explain(const std::string& name) {
  const std::string text = ExplanationText(name);
  if (text.empty()) return Refuse("no operator or function is called " + name);
  std::fputs(text.c_str(), stdout);
  return 0;
}

int Perform(const Options& options) {
  if (!options.error.empty()) return Refuse(options.error);
  switch (options.task) {
    case Task::Help:
      std::fputs(Usage, stdout);
      return 0;
    case Task::Version:
      std::puts("kelcalc " KEL_VERSION);
      return 0;
    case Task::List:
      std::fputs(ListText().c_str(), stdout);
      return 0;
    case Task::Explain:
      return Explain(options.explained);
    default:
      return Run(options);
  }
}

}  // namespace
}  // namespace kelcalc

int main(int count, char** words) {
  WatchOutput();
  int status = 1;
  try {
    status = kelcalc::Perform(kelcalc::ParseOptions(count, words));
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "kelcalc: %s\n", problem.what());
  }
  EndWithOutput(status);
}
