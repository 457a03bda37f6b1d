#include "tools/kelcalc/failure_report.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdio>

#include "calc/character_source.h"
#include "calc/help.h"
#include "calc/interpreter.h"
#include "calc/object.h"
#include "calc/rules.h"
#include "tools/kelcalc/number_style.h"
#include "tools/kelcalc/operand_types.h"
#include "tools/kelcalc/output.h"

namespace kelcalc {
namespace {

constexpr std::size_t MostCombinations = 6;

/// What a program writes for the operator or function that the engine calls `name`.
std::string Spelling(const std::string& name) {
  const auto first = static_cast<unsigned char>(name.empty() ? 'x' : name.front());
  return std::isalnum(first) != 0 || first == '_' ? ';' + name : name;
}

/// The types of the `count` top entries, deepest first: "(string, real)".
std::string TopTypes(const CaInterpreter& interpreter, int count) {
  std::string types = "(";
  for (int position = std::min(count, interpreter.Depth()) - 1; position >= 0; --position) {
    types += TypeName(interpreter.Peek(position)->Value()->type);
    if (position > 0) types += ", ";
  }
  return types + ')';
}

/// The token as it was typed, on one line, without what a terminal would obey.
std::string TokenText(const CaInterpreter& interpreter) {
  std::string token = interpreter.input->MarkedText();
  for (char& c : token) {
    if (static_cast<unsigned char>(c) < 0x20 || c == '\x7F') c = ' ';
  }
  token.erase(token.find_last_not_of(' ') + 1);
  return token;
}

/// "it takes real+real, vector+vector, ..."; integers, which no program can make, are left out.
std::string TakenText(const OperandTypes& taken, const std::string& name) {
  std::string text;
  std::size_t shown = 0;
  for (const Combination& combination : taken.combinations) {
    if (std::ranges::find(combination.operands, "integer") != combination.operands.end()) continue;
    if (shown == MostCombinations) return text + ", ...";
    text += (shown++ == 0 ? "it takes " : ", ") + CombinationText(combination, name);
  }
  return text;
}

int MostOperandsOf(const OperandTypes& taken) {
  std::size_t most = 0;
  for (const Combination& one : taken.combinations) most = std::max(most, one.operands.size());
  return static_cast<int>(most);
}

int FewestOperandsOf(const OperandTypes& taken) {
  std::size_t fewest = MostOperands;
  for (const Combination& one : taken.combinations) fewest = std::min(fewest, one.operands.size());
  return static_cast<int>(fewest);
}

/// Whether the entries on top are of the types that an operator without rules takes.
bool Fits(const CaInterpreter& interpreter, const OperandTypes& taken) {
  for (const Combination& combination : taken.combinations) {
    int position = static_cast<int>(combination.operands.size());
    const bool fits = std::ranges::all_of(combination.operands, [&](const std::string& type) {
      const CaObject& entry = *interpreter.Peek(--position);
      if (type == "variable") return entry.Kind() == KindVariable;
      return type == "any" || type == TypeName(entry.Value()->type);
    });
    if (fits) return true;
  }
  return false;
}

}  // namespace

void FailureReport::Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name) {
  ++count;
  if (settings.where) SayWhere(interpreter, failure, name);
  pairRules = {};
  topRules = {};
  if (settings.stop) EndWithOutput(1);
}

void FailureReport::SayWhere(const CaInterpreter& interpreter, CaFailure failure,
                             const char* name) const {
  const CaPosition position = interpreter.input->MarkedPosition();
  const std::string place = interpreter.input->name + ':' + std::to_string(position.line) + ':' +
                            std::to_string(position.column) + ": ";
  std::fprintf(interpreter.errors, "%s%s%s%s\n", settings.colour ? "\x1b[1m" : "", place.c_str(),
               settings.colour ? "\x1b[0m" : "", Reason(interpreter, failure, name).c_str());
}

std::string FailureReport::Reason(const CaInterpreter& interpreter, CaFailure failure,
                                  const char* name) const {
  const std::string stack =
      ", the stack holds " + std::to_string(interpreter.Depth()) + ' ' + TopTypes(interpreter, 4);
  switch (failure) {
    case CaFailure::BadNumber:
      return TokenText(interpreter) + " is no number" + stack;
    case CaFailure::BadCompound:
      return TokenText(interpreter) + " is no constant " + name + "(...)" + stack;
    case CaFailure::UnknownOperator:
      return Spelling(name) + " is no operator or function" + stack;
    case CaFailure::UnknownSpecifier:
      return std::string(name) + "( begins no constant; v( p( m( q( r( s( do" + stack;
    default:
      return OperatorReason(interpreter, Spelling(name));
  }
}

std::string FailureReport::OperatorReason(const CaInterpreter& interpreter,
                                          const std::string& name) const {
  if (name == "''") {  // the one operator whose operand is gone when it fails
    return name + " on " + TopTypes(interpreter, 4) + ": the index that was on top is no position";
  }
  OperandTypes taken;
  if (!pairRules.empty()) {
    taken = {CombinationsOf(pairRules), true};
  } else if (!topRules.empty()) {
    taken = {CombinationsOf(topRules), true};
  } else if (const CaHelpEntry* help = FindHelp(name); help != nullptr) {
    taken = TypesOf(*help);
  }
  // Where the number of operands depends on the top, its type is what tells.
  const int wanted = taken.combinations.empty() ? 0 : MostOperandsOf(taken);
  const std::string on = name + " on " + TopTypes(interpreter, wanted) + ": ";
  if (interpreter.Depth() < FewestOperandsOf(taken)) {
    return on + "too few entries; " + TakenText(taken, name);
  }
  const bool tried = !pairRules.empty() || !topRules.empty();
  if (!tried && Fits(interpreter, taken)) return on + "failed with these values";
  return on + "no rule; " + TakenText(taken, name);
}

}  // namespace kelcalc
