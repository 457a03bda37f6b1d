#pragma once

struct CaInterpreter;
struct CaOperatorEntry;

/// Every message of the language, each written in one place, all to the interpreter's `errors`.
/// Failures of a program are told to its observer as well.
/// Those that return a number return 0, the result of the operation that failed.

/// A byte that begins nothing, which has no message; its item observer is told.
void TellPassedOver(const CaInterpreter& interpreter, int byte);

/// A number that is none, as a lone point.
int ReportBadNumber(CaInterpreter& interpreter);

/// A malformed list of numbers behind the specifier `name`, as in v(1, 2).
int ReportBadCompound(CaInterpreter& interpreter, const char* name);

/// An operator, or a function behind ";", that no table knows.
void ReportUnknownOperator(CaInterpreter& interpreter, const char* name);

/// A name before "(" that is no specifier.
void ReportUnknownSpecifier(CaInterpreter& interpreter, const char* name);

/// Operands of types that `name` has no rule for.
int ReportTypeMismatch(CaInterpreter& interpreter, const char* name);

/// A file that cannot be opened, or is nested too deeply.
int ReportUnopenedFile(CaInterpreter& interpreter, const char* path);

/// The bell that follows every operator or function that failed; only the observer is told which.
void ReportFailure(CaInterpreter& interpreter, const CaOperatorEntry& entry);

/// A message of the geometry, which tells what it did instead; receives it for the interpreter at
/// `context` (geometry/messages.h).
void ReportWarning(void* context, const char* message) noexcept;
