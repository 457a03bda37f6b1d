#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string_view>

#include "calc/list.h"
#include "calc/object.h"
#include "calc/token_text.h"
#include "calc/variables.h"

class CaCharacterSource;
class CaFailureObserver;
class CaItemObserver;

/// The run-time state of the language: what is being read, the variables and the operand stack.
///
/// Interpreters share nothing: several may run at a time, each on one thread.
struct CaInterpreter {
  /// Reads the standard input until told otherwise.
  CaInterpreter();

  /// Destroys what is left on the stack and in the table.
  ~CaInterpreter();
  CaInterpreter(const CaInterpreter&) = delete;
  CaInterpreter& operator=(const CaInterpreter&) = delete;

  // The operand stack. Position 0 is the top.

  int Depth() const { return stack.count; }

  /// The object at `position`, still owned by the stack; `NothingValue` beyond the depth.
  /// Deliberate: a negative position on a stack that is not empty is the top.
  const CaObject* Peek(int position) const;

  /// Pops and destroys up to `count` entries as plain values; a count below 1 does nothing.
  void PopValues(int count);

  /// The same for one entry.
  void PopValue() {
    if (CaObject* object = stack.PopFront(); object != nullptr) DestroyAsValue(object);
  }

  /// Pushes a copy of its own: texts are duplicated, names kept. `object` is a value, a variable
  /// or an operator; anything else is ignored.
  void PushCopy(const CaObject& object);

  /// Pushes `object` itself, which the stack then owns. For what was made for it: a variable bears
  /// a name from this interpreter's table.
  void PushOwned(CaObject* object) {
    if (stack.PushFront(object) < 0) DestroyAsValue(object);
  }

  /// Pops `count` operands, of which there are at least one, and pushes their result, which the
  /// stack then owns.
  void Replace(int count, CaValue* result);

  /// Runs an operator and returns its result, 1 for done and 0 for failed; while tokens are being
  /// skipped only one that always runs, while the others count as done.
  int Apply(OperatorFn function, std::int32_t alwaysRun) {
    return skipLevel >= 0 && alwaysRun == 0 ? 1 : function(*this);
  }

  // The variables, most recently defined first; see variables.h.

  const CaValue* FindVariable(const char* name) const { return table.Find(name); }
  int VariableCount() const { return variables.count; }
  const char* VariableNameAt(int position) const { return table.NameAt(position); }

  /// Stores a copy of `variable`.
  void DefineVariable(const CaVariable& variable);
  void DestroyVariables() { table.Destroy(); }

  CaCharacterSource* input;     // borrowed; never null
  CaList variables;             // of CaVariable
  CaList stack;                 // of CaValue, CaVariable and CaOperator; the head is the top
  std::int32_t nestDepth = 0;   // files being run inside one another; 0 at the top level
  std::int32_t skipLevel = -1;  // -1 executing, 0 skipping the next item, n inside n blocks

  std::FILE* output;  // what programs print; standard output
  std::FILE* errors;  // every message of the engine; standard error

  /// How programs print a value on `output`.
  void (*show)(std::FILE* output, const CaValue& value);

  /// How files of variables hold a value.
  void (*keep)(std::FILE* file, const CaInterpreter& interpreter, const CaValue& value);

  CaFailureObserver* observer = nullptr;   // borrowed; may be null
  CaItemObserver* itemObserver = nullptr;  // borrowed; may be null

  /// Why a file could not be read or written last: the system's number for it (errno), 0 for one
  /// that was nested too deeply.
  int fileProblem = 0;

  /// Set from outside, as by a signal, to stop at the next token (character_source.h). Never null.
  const std::atomic<int>* interruptRequested;

  /// How many more items a run may take before it stops as when interrupted.
  std::uint64_t stepsLeft = NoLimit;
  static constexpr std::uint64_t NoLimit = std::numeric_limits<std::uint64_t>::max();

  /// What `variables` holds by name, and all names that were met.
  mutable CaVariables table{variables};

  /// The text of the item that was read last, where it does not stand in the input as it is.
  CaTokenText token;
};
