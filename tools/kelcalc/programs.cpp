#include "tools/kelcalc/programs.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

#include "calc/character_source.h"
#include "calc/interpreter.h"
#include "calc/reports.h"
#include "calc/run.h"
#include "tools/kelcalc/input.h"

namespace kelcalc {
namespace {

/// Lets a file be made executable: its first line may name the program that runs it.
void SkipInterpreterLine(CaCharacterSource& source) {
  if (!source.StartsWith("#!")) return;
  int c = source.Read();
  while (c != '\n' && c != CaCharacterSource::End) c = source.Read();
}

/// Names of files seldom have blanks, programs always do.
int ReportMissing(CaInterpreter& interpreter, const std::string& path) {
  ReportUnopenedFile(interpreter, path.c_str());
  if (path.find(' ') != std::string::npos) {
    std::fputs("kelcalc: to run a text, put -e before it: kelcalc -e '1 2 + #'\n", stderr);
  }
  return 0;
}

bool IsText(const Program& program) { return program.origin == Program::Text; }

}  // namespace

int RunNamedFile(CaInterpreter& interpreter, const std::string& path) {
  const std::unique_ptr<CaCharacterSource> source =
      CaCharacterSource::OpenFile(path.c_str(), interpreter.interruptRequested, interpreter.output);
  if (source == nullptr) return ReportMissing(interpreter, path);
  SkipInterpreterLine(*source);
  return RunSource(interpreter, *source);
}

int RunPrograms(kel::Calculator& calculator, const std::vector<Program>& programs, bool stop) {
  CaInterpreter& interpreter = calculator.Engine();
  int status = 0;
  const bool severalTexts = std::count_if(programs.begin(), programs.end(), IsText) > 1;
  int texts = 0;
  for (const Program& program : programs) {
    int done = 1;
    if (program.origin == Program::StandardInput) {
      done = RunSource(interpreter, WatchedInput());
    } else if (IsText(program)) {
      const std::string number = '(' + std::to_string(++texts) + ')';
      calculator.Run(program.text, severalTexts ? "-e" + number : "-e");
    } else {
      done = RunNamedFile(interpreter, program.text);
    }
    if (done == 0) status = 1;
    if (done == 0 && stop) break;
  }
  return status;
}

}  // namespace kelcalc
