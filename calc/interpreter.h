#pragma once

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "calc/list.h"
#include "calc/name_pool.h"
#include "calc/object.h"
#include "calc/variable_index.h"

class CaCharacterSource;
class CaFailureObserver;

/// The run-time state of the language: what is being read, the variables and the operand stack.
/// Everything runs on the caller's thread; only one interpreter may run at a time.
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

  /// Pushes `object` itself, which the stack then owns. For results that were made for it.
  void PushOwned(CaObject* object) {
    if (stack.PushFront(object) < 0) DestroyAsValue(object);
  }

  /// Pops `count` operands, of which there are at least one, and pushes their result, which the
  /// stack then owns.
  void Replace(int count, CaValue* result);

  // The variables, most recently defined first.

  /// The stored value, still owned by the table; `NothingValue` when there is none of that name.
  const CaValue* FindVariable(const char* name) const;
  const CaValue* FindVariable(CaPooledName name) const {
    const CaListNode* node = name.text == nullptr ? nullptr : index.Find(variables, name);
    return node == nullptr ? &NothingValue : &static_cast<const CaVariable*>(node->payload)->value;
  }

  int VariableCount() const { return variables.count; }

  /// The name at `position` from the most recent; null beyond the end. Walks to the position.
  const char* VariableNameAt(int position) const;

  /// Stores a copy of `variable` as the most recent one, in place of one of the same name.
  /// A variable without a name is not stored.
  void DefineVariable(const CaVariable& variable);
  void DefineVariable(CaPooledName name, const CaValue& value);

  /// The same with `variable` itself, which the table then owns.
  void DefineOwned(std::unique_ptr<CaVariable> variable);

  void DestroyVariables();

  CaCharacterSource* input;     // borrowed; never null
  CaList variables;             // of CaVariable; change it through the operations above
  CaList stack;                 // of CaValue, CaVariable and CaOperator; the head is the top
  std::int32_t nestDepth = 0;   // files being run inside one another; 0 at the top level
  std::int32_t skipLevel = -1;  // -1 executing, 0 skipping the next item, n inside n blocks

  std::FILE* output;  // what programs print; standard output
  std::FILE* errors;  // every message of the engine; standard error

  /// How programs print a value on `output`; files of variables keep their own form.
  void (*show)(std::FILE* output, const CaValue& value);

  CaFailureObserver* observer = nullptr;  // borrowed; may be null

  /// Set from outside, as by a signal, to stop at the next token (interruption.h). Never null.
  const volatile std::sig_atomic_t* interruptRequested;

  /// Where a variable stands in `variables`, so that finding one does not walk the table.
  mutable CaVariableIndex index;

 private:
  /// Stores `variable`, whose name is new to the table.
  void AddVariable(std::unique_ptr<CaVariable> variable);
};
