#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "calc/constants.h"
#include "calc/object.h"

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

struct CaOperatorEntry {
  const char* name;
  OperatorFn function;
  std::int32_t alwaysRun;  // not 0: runs even while tokens are skipped
};

struct CaSpecifierEntry {
  const char* name;
  CompoundParser parse;
};

// No name occurs twice in a table; an entry with an empty name ends each.
extern const CaOperatorEntry CaOperatorTable[];    // operators by their spelling
extern const CaOperatorEntry CaFunctionTable[];    // functions by the name behind ";"
extern const CaSpecifierEntry CaSpecifierTable[];  // compound constants by the letter before "("

/// The operators of one byte, by that byte; null for the other bytes.
extern const std::array<const CaOperatorEntry*, 256> CaShortOperators;

/// The entry with exactly this name, letter case included, or null.
const CaOperatorEntry* FindOperator(std::string_view name);
inline const CaOperatorEntry* FindOperator(char name) {
  return CaShortOperators[static_cast<unsigned char>(name)];
}
const CaOperatorEntry* FindFunction(std::string_view name);
const CaSpecifierEntry* FindSpecifier(std::string_view name);

/// The next object of the input: a value, a variable with its value of this moment, or an
/// operator. The caller owns it; `DestroyAsValue` releases it. What is no object is reported or
/// dropped and reading goes on. For the end of the input see reader.h.
CaObject* NextObject(CaInterpreter& interpreter);
