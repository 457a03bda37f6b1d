#include "tools/kelcalc/watch.h"

#include <cstdio>

#include "calc/character_source.h"
#include "calc/explain/failure_reason.h"
#include "calc/interpreter.h"
#include "tools/kelcalc/input.h"
#include "tools/kelcalc/output.h"
#include "tools/kelcalc/session.h"

namespace kelcalc {

void Watch::Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name,
                   const CaOperatorEntry* entry) {
  std::string place;
  std::string reason;
  if (settings.where) {
    place = MarkedPlace(interpreter);
    reason = FailureReason(interpreter, failure, name, entry);
  }
  Count(interpreter, place, reason);
}

void Watch::Count(const CaInterpreter& interpreter, const std::string& place,
                  const std::string& reason) {
  ++failures;
  if (settings.where) {
    std::fprintf(interpreter.errors, "%s%s%s%s\n", settings.colour ? "\x1b[1m" : "", place.c_str(),
                 settings.colour ? "\x1b[0m" : "", reason.c_str());
  }
  if (settings.stop) EndWithOutput(1);
}

void Watch::SkippingBegan(const CaInterpreter& interpreter) {
  if (settings.where || settings.strict || settings.stop) skippingFrom = MarkedPlace(interpreter);
}

void Watch::InputEnded(const CaInterpreter& interpreter, CaUnfinished within) {
  CaCharacterSource& input = *interpreter.input;
  if (input.Error() != 0) {
    ReportUnreadInput(input.name, input.Error());
    if (settings.stop) EndWithOutput(1);
    return;
  }
  if (input.name == TerminalName) return;  // whoever leaves sees what is open
  if (within != CaUnfinished::Nothing) {
    Count(interpreter, MarkedPlace(interpreter), UnfinishedReason(interpreter, within));
  }
  if (interpreter.skipLevel > 0 && skippingFrom) {
    Count(interpreter, *skippingFrom, "the text ends within a block that this condition skips");
    skippingFrom.reset();
  }
}

void Watch::Warned(const CaInterpreter& interpreter, const char* message) {
  std::string reason = message;
  while (reason.ends_with('\n')) reason.pop_back();
  Count(interpreter, MarkedPlace(interpreter), TokenText(interpreter) + ": " + reason);
}

}  // namespace kelcalc
