#pragma once

#include <cstdint>
#include <string_view>

#include "calc/dispatch.h"
#include "calc/reader.h"

class CaValue;

/// From tokens to items, the smallest things that a program is made of. All of it that runs with
/// every item stands here, so that it becomes part of the loop that runs them.

enum class CaItemKind : std::uint32_t { None, Number, Text, Compound, Name, Operator };

/// One item, as data. `kind` says which member counts. It fits into two registers.
struct CaItem {
  CaItem() : CaItem(CaItemKind::None) {}
  explicit CaItem(double content) : CaItem(CaItemKind::Number) { number = content; }
  CaItem(CaItemKind textOrName, std::string_view content)
      : kind(textOrName),
        length(static_cast<std::uint32_t>(content.size())),
        text(content.data()) {}

  /// Of no kind when there is nothing.
  explicit CaItem(CaValue* content)
      : CaItem(content == nullptr ? CaItemKind::None : CaItemKind::Compound) {
    value = content;
  }
  explicit CaItem(const CaOperatorEntry* content)
      : CaItem(content == nullptr ? CaItemKind::None : CaItemKind::Operator) {
    entry = content;
  }

  std::string_view Text() const { return {text, length}; }

  CaItemKind kind;
  std::uint32_t length = 0;  // of the text
  union {
    double number;
    const char* text;  // of a Text, zero-terminated, or a Name; good until the next item is read
    CaValue* value;    // of a Compound; made for the receiver, who owns it
    const CaOperatorEntry* entry;  // of an Operator, which may be a function
  };

 private:
  explicit CaItem(CaItemKind thisKind) : kind(thisKind), entry(nullptr) {}
};

/// The operator or the function called `name`; null after a report when there is none.
const CaOperatorEntry* OperatorCalled(CaInterpreter& interpreter, std::string_view name);

/// Reads the compound constant that `name` begins, with the "(" unread. Its value belongs to the
/// caller; null after a report when it is none.
CaValue* ReadCompound(CaInterpreter& interpreter, std::string_view name);

/// What the end of the input leaves unfinished that began so.
CaUnfinished UnfinishedOf(CaTokenStart start);

// Each of these reads an item that has begun; it is of no kind when there was none, which was
// reported.

inline CaItem NumberItem(CaInterpreter& interpreter, bool negate) {
  double number = 0.0;
  return ReadNumber(interpreter, negate, number) == 0 ? CaItem() : CaItem(number);
}

/// Most operators are one byte, which tells the entry by itself.
inline CaItem SignItem(CaInterpreter& interpreter, char first) {
  const auto next = static_cast<unsigned char>(*interpreter.input->AtHand().data());
  const CaOperatorEntry* entry = ShortOperator(first);
  if (HasClass(next, OpChar) || MayBeTheEnd(next) || entry == nullptr) {
    return CaItem(OperatorCalled(interpreter, ReadOpName(interpreter, {&first, 1})));
  }
  return CaItem(entry);
}

/// "-" begins a number before a digit or a point.
inline CaItem MinusItem(CaInterpreter& interpreter) {
  const bool isNumber = TokenStartOf(PeekChar(interpreter)) == CaTokenStart::Number;
  return isNumber ? NumberItem(interpreter, true) : SignItem(interpreter, '-');
}

/// A variable, or a compound constant when "(" follows directly.
inline CaItem NameItem(CaInterpreter& interpreter) {
  const std::string_view name = ReadName(interpreter, 1);
  if (PeekChar(interpreter) == '(') return CaItem(ReadCompound(interpreter, name));
  return {CaItemKind::Name, name};
}

/// Reads what begins with `c`.
[[gnu::always_inline]] inline CaItem ReadItem(CaInterpreter& interpreter, int c) {
  switch (TokenStartOf(c)) {
    case CaTokenStart::Number:
      PushBackChar(interpreter);
      return NumberItem(interpreter, false);
    case CaTokenStart::Name:
      PushBackChar(interpreter);
      return NameItem(interpreter);
    case CaTokenStart::Minus:
      return MinusItem(interpreter);
    case CaTokenStart::Operator:
      return SignItem(interpreter, static_cast<char>(c));
    case CaTokenStart::Function:
      return CaItem(OperatorCalled(interpreter, ReadName(interpreter, 0)));
    case CaTokenStart::String:
      return {CaItemKind::Text, ReadString(interpreter)};
    case CaTokenStart::Comment:
      SkipComment(interpreter);
      return {};
    case CaTokenStart::End:
      throw EndOfInput();
    case CaTokenStart::None:
      TellPassedOver(interpreter, c);
      break;
    case CaTokenStart::Blank:
      break;
  }
  return {};
}

/// Reads on until there is an item. What is none is reported or dropped. For the end of the input
/// see reader.h.
[[gnu::always_inline]] inline CaItem NextItem(CaInterpreter& interpreter) {
  for (;;) {
    const int c = ReadPastBlanks(interpreter);
    interpreter.input->MarkLast();
    try {
      const CaItem item = ReadItem(interpreter, c);
      if (item.kind != CaItemKind::None) return item;
    } catch (EndOfInput& end) {
      if (end.within == CaUnfinished::Nothing) end.within = UnfinishedOf(TokenStartOf(c));
      throw;
    }
  }
}
