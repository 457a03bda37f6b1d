#include "calc/explain/failure_reason.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <vector>

#include "calc/character_source.h"
#include "calc/dispatch.h"
#include "calc/explain/alternatives.h"
#include "calc/explain/suggestions.h"
#include "calc/interpreter.h"
#include "calc/object.h"
#include "calc/rules.h"
#include "calc/run.h"

namespace kelcalc {
namespace {

constexpr std::size_t MostAlternatives = 6;

/// What a program wrote for the unknown operator or function that the engine calls `name`.
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

bool Fits(const CaObject& entry, CaType type) {
  if (type == AnyVariable) return entry.Kind() == KindVariable;
  return type == AnyType || type == entry.Value()->type;
}

/// How many of the entries on top are what `alternative` takes there.
int FittingEntries(const CaInterpreter& interpreter, const Alternative& alternative) {
  int fitting = 0;
  int position = 0;
  for (auto type = alternative.operands.rbegin(); type != alternative.operands.rend(); ++type) {
    if (position == interpreter.Depth()) break;
    if (Fits(*interpreter.Peek(position++), *type)) ++fitting;
  }
  return fitting;
}

/// "it takes real+real, or vector+vector, ...", first what fits the stack best; integers, which no
/// program can make, are left out.
std::string TakenText(const CaInterpreter& interpreter, const CaOperatorEntry& entry) {
  std::vector<Alternative> alternatives = AlternativesOf(entry);
  const auto fitsBetter = [&](const Alternative& one, const Alternative& other) {
    return FittingEntries(interpreter, one) > FittingEntries(interpreter, other);
  };
  std::stable_sort(alternatives.begin(), alternatives.end(), fitsBetter);
  std::string text = "it takes ";
  std::size_t shown = 0;
  for (const Alternative& one : alternatives) {
    if (std::count(one.operands.begin(), one.operands.end(), TypeInteger) > 0) continue;
    if (shown == MostAlternatives) return text + ", ...";
    if (shown++ > 0) text += ", or ";
    text += TakenText(one, entry);
  }
  return text;
}

/// The names without a value among the `count` entries on top: "x has no value: did you mean y; ".
std::string ValuelessText(const CaInterpreter& interpreter, int count) {
  std::string text;
  for (int position = std::min(count, interpreter.Depth()) - 1; position >= 0; --position) {
    const CaObject& entry = *interpreter.Peek(position);
    if (entry.Kind() != KindVariable || entry.Value()->type != TypeNothing) continue;
    const std::string name = entry.Name();
    text += name + " has no value" + Question(NearVariable(name, interpreter)) + "; ";
  }
  return text;
}

/// Why ;read or ;write failed on the name that is on top: "no.3dc: No such file or directory".
std::string FileReason(const CaInterpreter& interpreter) {
  const int problem = interpreter.fileProblem;
  return ProgramPath(interpreter.Peek(0)->Value()->text) + ": " +
         (problem == 0 ? "nested too deep" : std::strerror(problem));
}

std::string OperatorReason(const CaInterpreter& interpreter, const CaOperatorEntry& entry) {
  const std::string name = SpellingOf(entry);
  if (name == "''") {  // the one operator whose operand is gone when it fails
    return name + " on " + TopTypes(interpreter, 4) + ": the index that was on top is no position";
  }
  int most = 0;
  bool fits = false;
  bool wantsMore = false;  // all that is there fits, and more would be needed
  for (const Alternative& one : AlternativesOf(entry)) {
    const int wanted = static_cast<int>(one.operands.size());
    const int fitting = FittingEntries(interpreter, one);
    most = std::max(most, wanted);
    fits = fits || fitting == wanted;
    wantsMore = wantsMore || (wanted > interpreter.Depth() && fitting == interpreter.Depth());
  }
  const std::string on = name + " on " + TopTypes(interpreter, most) + ": ";
  const bool ofFile = entry.function == FindEntry(";read")->function ||
                      entry.function == FindEntry(";write")->function;
  if (fits && ofFile) return on + FileReason(interpreter);
  if (fits) return on + "failed with these values";
  return on + ValuelessText(interpreter, most) + (wantsMore ? "too few entries; " : "no rule; ") +
         TakenText(interpreter, entry);
}

std::string UnknownReason(const std::string& name) {
  if (name.starts_with("#!")) {
    return "#! is passed over only in the first line of a file named on the command line";
  }
  return Spelling(name) + " is no operator or function" + Question(NearOperator(name));
}

}  // namespace

/// The token as it was typed, on one line, without what a terminal would obey.
std::string TokenText(const CaInterpreter& interpreter) {
  std::string token = interpreter.input->MarkedText();
  for (char& c : token) {
    if (static_cast<unsigned char>(c) < 0x20 || c == '\x7F') c = ' ';
  }
  token.erase(token.find_last_not_of(' ') + 1);
  return token;
}

std::string MarkedPlace(const CaInterpreter& interpreter) {
  const CaPosition position = interpreter.input->MarkedPosition();
  return interpreter.input->name + ':' + std::to_string(position.line) + ':' +
         std::to_string(position.column) + ": ";
}

std::string UnfinishedReason(const CaInterpreter& interpreter, CaUnfinished within) {
  switch (within) {
    case CaUnfinished::String:
      return "the text ends within this string";
    case CaUnfinished::Comment:
      return "the text ends within this comment";
    case CaUnfinished::Constant:
      return "the text ends within this constant";
    default:
      return "the text ends directly behind " + TokenText(interpreter) +
             ", which does not count without a blank or a new line";
  }
}

std::string FailureReason(const CaInterpreter& interpreter, CaFailure failure,
                          const std::string& name, const CaOperatorEntry* entry) {
  const std::string stack =
      ", the stack holds " + std::to_string(interpreter.Depth()) + ' ' + TopTypes(interpreter, 4);
  switch (failure) {
    case CaFailure::BadNumber:
      return TokenText(interpreter) + " is no number" + stack;
    case CaFailure::BadCompound:
      return TokenText(interpreter) + " is no constant " + name + "(...)" + stack;
    case CaFailure::UnknownOperator:
      return UnknownReason(name) + stack;
    case CaFailure::UnknownSpecifier:
      return name + "( begins no constant; v( p( m( q( r( s( do" + stack;
    default:
      return OperatorReason(interpreter, *entry);
  }
}

}  // namespace kelcalc
