#include "tools/kelcalc/failure_report.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "calc/character_source.h"
#include "calc/dispatch.h"
#include "calc/interpreter.h"
#include "calc/object.h"
#include "calc/rules.h"
#include "tools/kelcalc/number_style.h"
#include "tools/kelcalc/output.h"
#include "tools/kelcalc/reference.h"

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

/// The token as it was typed, on one line, without what a terminal would obey.
std::string TokenText(const CaInterpreter& interpreter) {
  std::string token = interpreter.input->MarkedText();
  for (char& c : token) {
    if (static_cast<unsigned char>(c) < 0x20 || c == '\x7F') c = ' ';
  }
  token.erase(token.find_last_not_of(' ') + 1);
  return token;
}

/// "it takes real+real, or vector+vector, ..."; integers, which no program can make, are left out.
std::string TakenText(const CaOperatorEntry& entry) {
  std::string text = "it takes ";
  std::size_t shown = 0;
  for (const Alternative& one : AlternativesOf(entry)) {
    if (std::ranges::find(one.operands, TypeInteger) != one.operands.end()) continue;
    if (shown == MostAlternatives) return text + ", ...";
    if (shown++ > 0) text += ", or ";
    text += TakenText(one, entry);
  }
  return text;
}

/// Whether the entries on top are what `alternative` takes.
bool Fits(const CaInterpreter& interpreter, const Alternative& alternative) {
  auto position = static_cast<int>(alternative.operands.size());
  if (interpreter.Depth() < position) return false;
  return std::ranges::all_of(alternative.operands, [&](CaType type) {
    const CaObject& entry = *interpreter.Peek(--position);
    if (type == AnyVariable) return entry.Kind() == KindVariable;
    return type == AnyType || type == entry.Value()->type;
  });
}

std::string OperatorReason(const CaInterpreter& interpreter, const CaOperatorEntry& entry) {
  const std::string name = SpellingOf(entry);
  if (name == "''") {  // the one operator whose operand is gone when it fails
    return name + " on " + TopTypes(interpreter, 4) + ": the index that was on top is no position";
  }
  const std::vector<Alternative> alternatives = AlternativesOf(entry);
  std::size_t fewest = MostOperands;
  std::size_t most = 0;
  for (const Alternative& one : alternatives) {
    fewest = std::min(fewest, one.operands.size());
    most = std::max(most, one.operands.size());
  }
  const std::string on = name + " on " + TopTypes(interpreter, static_cast<int>(most)) + ": ";
  if (interpreter.Depth() < static_cast<int>(fewest)) {
    return on + "too few entries; " + TakenText(entry);
  }
  const auto fits = [&](const Alternative& one) { return Fits(interpreter, one); };
  if (std::ranges::any_of(alternatives, fits)) return on + "failed with these values";
  return on + "no rule; " + TakenText(entry);
}

std::string Reason(const CaInterpreter& interpreter, CaFailure failure, const char* name,
                   const CaOperatorEntry* entry) {
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
      return OperatorReason(interpreter, *entry);
  }
}

}  // namespace

void FailureReport::Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name,
                           const CaOperatorEntry* entry) {
  ++count;
  if (settings.where) {
    const CaPosition position = interpreter.input->MarkedPosition();
    const std::string place = interpreter.input->name + ':' + std::to_string(position.line) + ':' +
                              std::to_string(position.column) + ": ";
    std::fprintf(interpreter.errors, "%s%s%s%s\n", settings.colour ? "\x1b[1m" : "", place.c_str(),
                 settings.colour ? "\x1b[0m" : "",
                 Reason(interpreter, failure, name, entry).c_str());
  }
  if (settings.stop) EndWithOutput(1);
}

}  // namespace kelcalc
