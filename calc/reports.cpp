#include "calc/reports.h"

#include <cstdio>

#include "calc/dispatch.h"
#include "calc/failure_observer.h"
#include "calc/interpreter.h"
#include "calc/item_observer.h"

namespace {

void Tell(const CaInterpreter& interpreter, CaFailure failure, const char* name,
          const CaOperatorEntry* entry = nullptr) {
  if (interpreter.observer == nullptr) return;
  interpreter.observer->Failed(interpreter, failure, name, entry);
}

}  // namespace

void TellPassedOver(const CaInterpreter& interpreter, int byte) {
  if (interpreter.itemObserver == nullptr) return;
  interpreter.itemObserver->BytePassedOver(interpreter, static_cast<unsigned char>(byte));
}

int ReportBadNumber(CaInterpreter& interpreter) {
  std::fputs("Problem in format of number\n", interpreter.errors);
  Tell(interpreter, CaFailure::BadNumber, "");
  return 0;
}

int ReportBadCompound(CaInterpreter& interpreter, const char* name) {
  std::fprintf(interpreter.errors, "Problem in format of compound constant %s\n", name);
  Tell(interpreter, CaFailure::BadCompound, name);
  return 0;
}

void ReportUnknownOperator(CaInterpreter& interpreter, const char* name) {
  std::fprintf(interpreter.errors, "\nUnrecognized operator %s\n", name);
  Tell(interpreter, CaFailure::UnknownOperator, name);
}

void ReportUnknownSpecifier(CaInterpreter& interpreter, const char* name) {
  std::fprintf(interpreter.errors, "\nUnrecognized constant specifier %s\n", name);
  Tell(interpreter, CaFailure::UnknownSpecifier, name);
}

int ReportTypeMismatch(CaInterpreter& interpreter, const char* name) {
  std::fprintf(interpreter.errors, "\nType mismatch for operator %s\n", name);
  return 0;
}

int ReportUnopenedFile(CaInterpreter& interpreter, const char* path) {
  std::fprintf(interpreter.errors, " Can't open file %s!\n", path);
  return 0;
}

void ReportFailure(CaInterpreter& interpreter, const CaOperatorEntry& entry) {
  std::fputs("\a \n", interpreter.errors);
  Tell(interpreter, CaFailure::OperatorFailed, entry.name, &entry);
}

void ReportWarning(void* context, const char* message) noexcept {
  const auto& interpreter = *static_cast<const CaInterpreter*>(context);
  std::fputs(message, interpreter.errors);
  if (interpreter.observer != nullptr) interpreter.observer->Warned(interpreter, message);
}
