#include "tools/kelcalc/programs.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>

#include "tools/kelcalc/input.h"

namespace kelcalc {
namespace {

using End = kel::Outcome::End;

bool IsText(const Program& program) { return program.origin == Program::Text; }

/// Names of files seldom have blanks, programs always do.
void HintAtTexts(const std::string& path) {
  if (path.find(' ') == std::string::npos) return;
  std::fputs("kelcalc: to run a text, put -e before it: kelcalc -e '1 2 + #'\n", stderr);
}

}  // namespace

int RunPrograms(kel::Calculator& calculator, const std::vector<Program>& programs, bool stop) {
  int status = 0;
  const bool severalTexts = std::count_if(programs.begin(), programs.end(), IsText) > 1;
  int texts = 0;
  kel::Source input(ReadStandardInput, StandardInputName);
  for (const Program& program : programs) {
    if (program.origin == Program::StandardInput) {
      calculator.Run(input);
    } else if (IsText(program)) {
      const std::string number = '(' + std::to_string(++texts) + ')';
      calculator.Run(program.text, severalTexts ? "-e" + number : "-e");
    } else if (calculator.RunFile(program.text).end == End::Unopened) {
      HintAtTexts(program.text);
      status = 1;
      if (stop) break;
    }
  }
  return status;
}

}  // namespace kelcalc
