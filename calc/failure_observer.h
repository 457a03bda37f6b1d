#pragma once

#include <cstdint>
#include <span>

struct CaInterpreter;
struct CaRule;
struct CaTopRule;

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

  /// The operator that is running found no rule for its operands among these. `Failed` follows.
  virtual void NoRuleAmong(std::span<const CaRule>) {}
  virtual void NoRuleAmong(std::span<const CaTopRule>) {}

  /// Where the token stands is known to the interpreter's input as the marked position. The stack
  /// is as the failure left it. `name` is good during the call only.
  virtual void Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name) = 0;
};
