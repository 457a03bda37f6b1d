// kelcalc: runs programs from files, arguments, the standard input and the keyboard.

#include <kelcalc.h>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "calc/character_source.h"
#include "calc/interpreter.h"
#include "calc/run.h"
#include "tools/kelcalc/exact_text.h"
#include "tools/kelcalc/file_writing.h"
#include "tools/kelcalc/help_topics.h"
#include "tools/kelcalc/input.h"
#include "tools/kelcalc/number_style.h"
#include "tools/kelcalc/options.h"
#include "tools/kelcalc/output.h"
#include "tools/kelcalc/picture.h"
#include "tools/kelcalc/programs.h"
#include "tools/kelcalc/reference.h"
#include "tools/kelcalc/session.h"
#include "tools/kelcalc/stack_display.h"
#include "tools/kelcalc/state_json.h"
#include "tools/kelcalc/version.h"
#include "tools/kelcalc/warnings.h"
#include "tools/kelcalc/watch.h"

namespace kelcalc {
namespace {

/// Runs the standard input as the language's top level, whose end empties the interpreter.
void RunInput(CaInterpreter& interpreter) {
  static CaCharacterSource source{CaCharacterSource::Fill(ReadStandardInput)};
  source.name = StandardInputName;
  interpreter.input = &source;
  RunTopLevel(interpreter);
}

/// What runs before a session, if there is one. Pictures and the like need what the end of the
/// interpreter's input would empty, so standard input is then a program like others.
std::vector<Program> ProgramsOf(const Options& options, bool session) {
  const bool keepsState = !options.pictures.empty() || !options.json.empty();
  if (session || !options.programs.empty() || !keepsState) return options.programs;
  return {{Program::StandardInput, ""}};
}

/// 0, or 1 with a message when a picture could not be written.
int ShowPictures(const CaInterpreter& interpreter, const Options& options) {
  if (options.pictures.empty()) return 0;
  const std::string problem = WritePictures(interpreter, options.pictures, options.picturesFrom);
  if (problem.empty()) return 0;
  std::fprintf(stderr, "kelcalc: %s\n", problem.c_str());
  return 1;
}

/// 0, or 1 with a message when the state could not be written.
int WriteState(const CaInterpreter& interpreter, const std::string& path) {
  if (path.empty()) return 0;
  const std::string json = StateJson(interpreter);
  if (path == "-") return std::fputs(json.c_str(), stdout) < 0 ? 1 : 0;
  const std::string reason = WriteFile(path, json);
  if (reason.empty()) return 0;
  std::fprintf(stderr, "kelcalc: cannot write %s: %s\n", path.c_str(), reason.c_str());
  return 1;
}

bool WantsSession(const Options& options) {
  return options.interactive || (options.programs.empty() && AtTerminal());
}

void HoldSession(kel::Calculator& calculator, const Options& options, bool colour) {
  DisplayStyle style{.colour = colour};
  if (options.digits > 0) style.digits = options.digits;
  RunSession(calculator, {.showStack = options.showStack, .picturesFrom = options.picturesFrom},
             style);
}

int Run(const Options& options) {
  const bool session = WantsSession(options);
  const bool colour = session && ColoursWanted();
  Watch watch({.where = Chosen(options.where, session),
               .strict = options.strict,
               .stop = options.stop,
               .colour = colour});
  Warnings warnings(
      {.colour = colour, .keeper = session ? ":save" : "--exact", .writesExactly = options.exact});

  kel::Calculator calculator(stdout, stderr);
  CaInterpreter& interpreter = calculator.Engine();
  interpreter.observer = &watch;
  if (Chosen(options.warn, session)) interpreter.itemObserver = &warnings;
  if (options.exact) WriteExactly(interpreter);
  if (options.digits > 0) SetShownDigits(interpreter, options.digits);

  const std::vector<Program> programs = ProgramsOf(options, session);
  int status = RunPrograms(calculator, programs, options.stop);
  if (status != 0 && options.stop) return status;
  if (session) {
    HoldSession(calculator, options, colour);
  } else if (programs.empty()) {
    RunInput(interpreter);
  }
  if (ShowPictures(interpreter, options) != 0) status = 1;
  if (WriteState(interpreter, options.json) != 0) status = 1;
  if ((options.strict && watch.Failures() > 0) || InputFailed()) status = 1;
  return status;
}

int Refuse(const std::string& complaint) {
  std::fprintf(stderr, "kelcalc: %s\nTry 'kelcalc --help'.\n", complaint.c_str());
  return 2;
}

int Explain(const std::string& name) {
  const std::string text = HelpText(name);
  if (text.empty()) return Refuse("no operator, function, type or topic is called " + name);
  std::fputs(text.c_str(), stdout);
  return 0;
}

int Perform(const Options& options) {
  if (!options.error.empty()) return Refuse(options.error);
  switch (options.task) {
    case Task::Help:
      std::fputs(UsageText().c_str(), stdout);
      return 0;
    case Task::Version:
      std::printf("kelcalc %s\n", VersionText);
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
  int status = 1;
  try {
    const kelcalc::Options options = kelcalc::ParseOptions(count, words);
    WatchOutput(options.task == kelcalc::Task::Run && kelcalc::WantsSession(options));
    status = kelcalc::Perform(options);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "kelcalc: %s\n", problem.what());
  }
  EndWithOutput(status);
}
