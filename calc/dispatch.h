#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "calc/constants.h"
#include "calc/interpreter.h"
#include "calc/object.h"
#include "calc/rules.h"

/// What the names of the language stand for.
///
/// Every operator and function keeps these conventions:
/// - Operands are named by position: 0 (also S0) is the top of the stack, 1 (S1) the entry beneath
///   it. A variable counts with the value it holds.
/// - The depth of the stack is compared first, then the types. A combination without a rule fails,
///   with a report where the rules say so.
/// - Operands are popped only when the result is built: an operator that fails leaves the stack
///   as it was. ("''" alone is different.)
/// - Conditions push nothing; a false one raises `skipLevel`.

/// What an operator answers when the stack holds fewer entries than any of its forms takes.
enum class CaShortStack : std::int32_t { Fails = 0, Succeeds = 1 };

/// What users are told of an operator beside its rules.
struct CaHelp {
  const char* summary;  // what it does, as a phrase
  const char* example;  // a program of one line
  const char* output;   // what the example prints
};

/// Everything about one operator or function. Those of a family stand in one header, which only
/// the tables include; each is told of nowhere else.
struct CaOperatorEntry {
  const char* name;  // of a function without its ";"
  OperatorFn function;
  std::int32_t alwaysRun = 0;             // not 0: runs even while tokens are skipped
  const char* sign = "";                  // what a program writes before the name
  const CaRuleGrid* pairs = nullptr;      // the rules of an operator of two operands; else
  std::span<const CaTopRule> forms = {};  // what it takes and gives
  CaShortStack onShortStack = CaShortStack::Fails;
  bool prints = false;  // writes to the interpreter's `output`
  CaHelp help = {"", "", ""};
};

/// Stands before the names of functions.
inline constexpr const char* FunctionSign = ";";

/// What a program writes: ";sin".
std::string SpellingOf(const CaOperatorEntry& entry);

/// The routine of an operator whose rules for pairs say all that it does.
template <const CaOperatorEntry& Entry>
int ApplyPairRules(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return static_cast<int>(Entry.onShortStack);
  return ApplyRules(interpreter, *Entry.pairs, Entry);
}

/// The routine of an operator whose forms say all that it does.
template <const CaOperatorEntry& Entry>
int ApplyTopRules(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 1) return static_cast<int>(Entry.onShortStack);
  return ApplyForms(interpreter, Entry);
}

struct CaSpecifierEntry {
  const char* name;
  CompoundParser parse;
};

// No name occurs twice in a table; an entry with an empty name ends each. By name they are found in
// the interpreter's table of names (names.h).
extern const CaOperatorEntry CaOperatorTable[];    // operators by their spelling
extern const CaOperatorEntry CaFunctionTable[];    // functions by the name behind ";"
extern const CaSpecifierEntry CaSpecifierTable[];  // compound constants by the letter before "("

/// The operator whose name is this one byte, or null.
extern const std::array<const CaOperatorEntry*, 256> CaShortOperators;
inline const CaOperatorEntry* ShortOperator(char name) {
  return CaShortOperators[static_cast<unsigned char>(name)];
}
