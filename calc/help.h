#pragma once

#include <string_view>

/// What a user is told about an operator or a function, beside the rules that run it.
struct CaHelpEntry {
  const char* name;      // as it is written; functions with their ";"
  const char* operands;  // deepest first, where no table of rules names their types; else empty
  const char* summary;   // what it does, as a phrase
  const char* example;   // a program of one line
  const char* output;    // what the example prints
};

/// All operators in the order of `CaOperatorTable`, then all functions in the order of
/// `CaFunctionTable`; an entry with an empty name ends it.
extern const CaHelpEntry CaHelpTable[];

/// The entry with exactly this name, or null; a function is also found without its ";" where no
/// operator has that name.
const CaHelpEntry* FindHelp(std::string_view name);
