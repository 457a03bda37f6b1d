#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "calc/dispatch.h"

namespace kelcalc {

// All of this is read from the entries of the dispatch tables.

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

/// What --list prints: every operator and function with what it takes and gives.
std::string ListText();

/// One line for each of them: what it is called and what it does.
std::string SummaryText();

/// What --explain prints about `name`, a function with or without its ";"; empty when there is no
/// such name.
std::string ExplanationText(std::string_view name);

/// The same for all names, as the section of docs/language.md between its two markers.
std::string ReferenceMarkdown();

}  // namespace kelcalc
