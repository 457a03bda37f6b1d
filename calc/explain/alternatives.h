#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "calc/dispatch.h"

namespace kelcalc {

// All of this is read from the entries of the dispatch tables.

/// The name of a value's type, in lower case: "real".
const char* TypeName(int type);

/// One of the combinations that an operator or a function takes.
struct Alternative {
  std::vector<CaType> operands;  // deepest first
  CaType gives;                  // TypeNothing where no value is pushed
  bool keeps;                    // the operand stays as it is
};

/// All of them, in the order of the rules.
std::vector<Alternative> AlternativesOf(const CaOperatorEntry& entry);

/// "real+real" for an operator between two operands, else "2 reals" or "3 vectors and a point";
/// "nothing" when it takes none.
std::string TakenText(const Alternative& alternative, const CaOperatorEntry& entry);

/// The entry of that spelling, a function with or without its ";"; null when there is none.
const CaOperatorEntry* FindEntry(std::string_view name);

}  // namespace kelcalc
