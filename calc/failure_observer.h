#pragma once

#include <cstdint>

struct CaInterpreter;
struct CaOperatorEntry;

/// What can go wrong in a program.
enum class CaFailure : std::int32_t {
  BadNumber,         // no name
  BadCompound,       // named: the specifier
  UnknownOperator,   // named: the operator, or a function without its ";"
  UnknownSpecifier,  // named: what stood before "("
  OperatorFailed,    // named: the operator, or a function without its ";"
};

/// Is told of every failure of a program, after the language's own message was written. Nothing
/// that it does may change the interpreter.
class CaFailureObserver {
 public:
  CaFailureObserver() = default;
  CaFailureObserver(const CaFailureObserver&) = delete;
  CaFailureObserver& operator=(const CaFailureObserver&) = delete;
  virtual ~CaFailureObserver() = default;

  /// Where the token stands is known to the interpreter's input as the marked position. The stack
  /// is as the failure left it. `name` is good during the call only; `entry` is null unless an
  /// operator failed.
  virtual void Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name,
                      const CaOperatorEntry* entry) = 0;
};
