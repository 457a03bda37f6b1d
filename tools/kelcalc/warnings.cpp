#include "tools/kelcalc/warnings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <vector>

#include "calc/character_source.h"
#include "calc/dispatch.h"
#include "calc/explain/alternatives.h"
#include "calc/explain/failure_reason.h"
#include "calc/explain/suggestions.h"
#include "calc/interpreter.h"
#include "calc/next_item.h"
#include "calc/numbers.h"
#include "tools/kelcalc/number_style.h"

namespace kelcalc {
namespace {

constexpr std::size_t MostNames = 3;

bool IsFinite(const CaValue& value) {
  const std::vector<double> numbers = NumbersIn(value);
  return std::all_of(numbers.begin(), numbers.end(), [](double x) { return std::isfinite(x); });
}

bool IsCalled(const CaOperatorEntry& entry, std::string_view name) { return entry.name == name; }

/// Whether an operator only moves what is there already, be it finite or not.
bool OnlyMoves(const CaOperatorEntry& entry) {
  return IsCalled(entry, "|") || IsCalled(entry, "''") || IsCalled(entry, "read");
}

bool IsInvertible(const CaValue& value) {
  return value.type == TypeMatrix || value.type == TypeQuaternion;
}

/// Whether `value` is its own inverse, as near as doubles come.
bool IsItsOwnInverse(const CaValue& value) {
  constexpr double Tolerance = 1e-9;
  if (value.type == TypeQuaternion) {
    return std::abs(std::abs(value.quaternion.w) - 1.0) < Tolerance;
  }
  const auto& m = value.matrix.m;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column) {
      double element = column == 3 ? m[row][3] : 0.0;
      for (int k = 0; k < 3; ++k) element += m[row][k] * m[k][column];
      if (!(std::abs(element - (row == column ? 1.0 : 0.0)) < Tolerance)) return false;
    }
  }
  return true;
}

/// Whether a number that is written with so many decimals reads back as another one.
bool IsCut(double number, int decimals) {
  char text[LongestFixed];
  const char* end = WriteFixed(text, number, decimals, 0);
  double back = 0.0;
  CaCharacterSource source(std::string_view(text, static_cast<std::size_t>(end - text)));
  return std::isfinite(number) && !(ReadSigned(source, back) && back == number);
}

bool IsCut(const CaValue& value) {
  const int decimals = value.type == TypeMatrix ? 3 : 6;
  const std::vector<double> numbers = NumbersIn(value);
  return std::any_of(numbers.begin(), numbers.end(), [&](double x) { return IsCut(x, decimals); });
}

struct LookAlike {
  std::string_view character;  // in UTF-8
  const char* meant;
};

// What text programs and other keyboards make of the signs of the language.
constexpr LookAlike LookAlikes[] = {
    {"\u2013", "-"}, {"\u2014", "-"},  {"\u2212", "-"},  {"\u00D7", "*"},
    {"\u00F7", "/"}, {"\u201C", "\""}, {"\u201D", "\""}, {"\u00A0", "a blank"},
};
constexpr std::string_view ByteOrderMark = "\uFEFF";

/// The character that `byte` begins, as far as it is at hand.
std::string CharacterAt(const CaInterpreter& interpreter, unsigned char byte) {
  std::string character(1, static_cast<char>(byte));
  const std::size_t more = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : byte >= 0xC2 ? 1 : 0;
  for (const char c : interpreter.input->AtHand().substr(0, more)) {
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) return character.substr(0, 1);
    character += c;
  }
  return character.size() == more + 1 ? character : character.substr(0, 1);
}

std::string PassedOverText(const std::string& character) {
  if (character == ByteOrderMark) return "a byte order mark is passed over";
  for (const LookAlike& one : LookAlikes) {
    if (one.character == character) {
      return character + " is passed over" + Question(one.meant);
    }
  }
  if (character.size() > 1) return character + " is passed over";
  char number[8];
  std::snprintf(number, sizeof number, "%02X", static_cast<unsigned char>(character[0]));
  return std::string("the byte ") + number + " is passed over";
}

}  // namespace

void Warnings::Warn(const CaInterpreter& interpreter, const std::string& place,
                    const std::string& text) const {
  std::fprintf(interpreter.errors, "%s%s%swarning: %s\n", settings.colour ? "\x1b[1m" : "",
               place.c_str(), settings.colour ? "\x1b[0m" : "", text.c_str());
}

void Warnings::ItemRan(const CaInterpreter& interpreter, const CaItem& item) {
  const bool assigns = item.kind == CaItemKind::Operator && IsCalled(*item.entry, ":");
  if (!assigns) TellOfValueless(interpreter);
  valueless.reset();
  if (before.skipLevel < 0) {
    const CaObject& top = *interpreter.Peek(0);
    if (item.kind == CaItemKind::Operator) {
      LookAtOperator(interpreter, *item.entry);
    } else if (item.kind == CaItemKind::Name && top.Value()->type == TypeNothing) {
      valueless = {MarkedPlace(interpreter), top.Name()};
    } else if (item.kind != CaItemKind::Name && !IsFinite(*top.Value())) {
      Warn(interpreter, MarkedPlace(interpreter),
           TokenText(interpreter) + ": too large a number counts as an infinity");
    }
  }
  Remember(interpreter);
}

void Warnings::TellOfValueless(const CaInterpreter& interpreter) {
  if (!valueless) return;
  Warn(interpreter, valueless->place,
       valueless->name + " has no value" + Question(NearVariable(valueless->name, interpreter)));
}

void Warnings::LookAtOperator(const CaInterpreter& interpreter, const CaOperatorEntry& entry) {
  const CaValue& top = *interpreter.Peek(0)->Value();
  if (IsCalled(entry, "~") && IsInvertible(top) && NumbersIn(top) == before.inverted &&
      !IsItsOwnInverse(top)) {
    Warn(interpreter, MarkedPlace(interpreter),
         std::string("this ") + TypeName(top.type) + " has no inverse; ~ left it as it was");
  }
  if (IsCalled(entry, "write") && interpreter.Depth() < before.depth) {
    LookAtWrittenFile(interpreter);
  }
  LookAtResult(interpreter, entry);
}

/// An operand that is not finite explains a result that is not.
void Warnings::LookAtResult(const CaInterpreter& interpreter, const CaOperatorEntry& entry) const {
  const int operands = before.depth - interpreter.Depth() + 1;
  if (OnlyMoves(entry) || operands < 1 || interpreter.Depth() == 0) return;
  const auto looked = before.finite.begin() + std::min<int>(operands, MostOperands);
  if (!std::all_of(before.finite.begin(), looked, [](bool finite) { return finite; })) return;
  if (IsFinite(*interpreter.Peek(0)->Value())) return;
  Warn(interpreter, MarkedPlace(interpreter),
       "the result of " + SpellingOf(entry) +
           " is not finite: " + ValueText(*interpreter.Peek(0)->Value(), 6));
}

void Warnings::LookAtWrittenFile(const CaInterpreter& interpreter) {
  if (settings.writesExactly || toldOfDigits) return;
  std::string names;
  std::size_t count = 0;
  for (const CaListNode* node = interpreter.variables.tail; node != nullptr;
       node = node->previous) {
    if (!IsCut(*node->payload->Value()) || ++count > MostNames) continue;
    names += (names.empty() ? "" : ", ") + std::string(node->payload->Name());
  }
  if (count == 0) return;
  if (count > MostNames) names += ", ...";
  Warn(interpreter, MarkedPlace(interpreter),
       "not every digit of " + names + " was written; " + settings.keeper + " keeps them");
  toldOfDigits = true;
}

void Warnings::Remember(const CaInterpreter& interpreter) {
  before.depth = interpreter.Depth();
  before.skipLevel = interpreter.skipLevel;
  const CaListNode* node = interpreter.stack.head;
  for (bool& finite : before.finite) {
    finite = node == nullptr || IsFinite(*node->payload->Value());
    if (node != nullptr) node = node->next;
  }
  const CaValue& top = *interpreter.Peek(0)->Value();
  before.inverted = IsInvertible(top) ? NumbersIn(top) : std::vector<double>();
}

void Warnings::BytePassedOver(const CaInterpreter& interpreter, unsigned char byte) {
  if (byte < 0x80) return;
  // The bytes between may have been operators.
  if (const auto at = passedOver.find(static_cast<char>(byte)); at != std::string::npos) {
    passedOver.erase(0, at + 1);
    return;
  }
  const std::string character = CharacterAt(interpreter, byte);
  passedOver = character.substr(1);
  Warn(interpreter, MarkedPlace(interpreter), PassedOverText(character));
}

}  // namespace kelcalc
