#pragma once

#include <span>
#include <string>
#include <vector>

#include "calc/failure_observer.h"
#include "calc/rules.h"

struct CaHelpEntry;

namespace kelcalc {

/// One combination of types that an operator or a function takes.
struct Combination {
  std::vector<std::string> operands;  // names of types, deepest first
  std::string result;                 // a type, "unchanged", or empty for no value
};

/// What an operator or a function takes.
struct OperandTypes {
  std::vector<Combination> combinations;
  bool fromRules = false;  // from the table that runs it; else from what users are told of it
};

/// The combinations that have a rule, in the order of the table.
std::vector<Combination> CombinationsOf(std::span<const CaRule> rules);
std::vector<Combination> CombinationsOf(std::span<const CaTopRule> rules);

/// The same for the operator or function that `help` describes, found by asking the routine that
/// the dispatch tables name.
OperandTypes TypesOf(const CaHelpEntry& help);

/// "real+real" for an operator between two operands, else "real, real"; three or more operands of
/// one type are counted: "12 reals". "nothing" when there are none.
std::string CombinationText(const Combination& combination, const std::string& name);

}  // namespace kelcalc
