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

/// What the end of an input cut off.
enum class CaUnfinished : std::int32_t {
  Nothing,
  Token,     // a name or an operator without a byte behind it
  String,    // without its closing mark
  Comment,   // without its "]"
  Constant,  // without its ")"
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

  /// A condition began to skip. It is the token at the input's marked position.
  virtual void SkippingBegan(const CaInterpreter&) {}

  /// The interpreter's input has ended, or can be read no further when it says so (`Error`). What
  /// is `within` began at the marked position. The interpreter may also be skipping, as `skipLevel`
  /// says; that goes on in the text behind a nested input.
  virtual void InputEnded(const CaInterpreter&, CaUnfinished within) { static_cast<void>(within); }

  /// A message of the geometry, which is no failure of the operator.
  virtual void Warned(const CaInterpreter&, const char* message) { static_cast<void>(message); }
};
