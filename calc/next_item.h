#pragma once

#include "calc/character_source.h"
#include "calc/dispatch.h"
#include "calc/interpreter.h"
#include "calc/reader.h"
#include "calc/reports.h"

/// Reads one item of a program and hands it to `receiver`, in the cheapest form that it has:
///   Real(double), String(const char*), Compound(CaValue* owned), Variable(std::string_view name),
///   Operator(const CaOperatorEntry&).
/// One reader serves `NextObject`, which makes objects of the items, and the loop that runs them,
/// which mostly needs none.
template <typename Receiver>
class CaItemReader {
 public:
  CaItemReader(CaInterpreter& interpreter, Receiver& receiver)
      : interpreter_(interpreter), receiver_(receiver) {}

  /// Reads on until an item was handed over. What is no item is reported or dropped.
  void ReadItem() {
    for (bool found = false; !found;) {
      const int c = ReadPastBlanks(interpreter_);
      interpreter_.input->MarkLast();
      found = ReadFrom(c);
    }
  }

 private:
  static bool BeginsNumber(int c) { return c == '.' || (c >= '0' && c <= '9'); }
  static bool BeginsName(int c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

  /// Reads the token that begins with `c`; true when it was an item.
  bool ReadFrom(int c) {
    if (BeginsNumber(c)) {
      PushBackChar(interpreter_);
      return ReadReal(false);
    }
    if (BeginsName(c)) {
      PushBackChar(interpreter_);
      return ReadNamed();
    }
    if (c == '-' && BeginsNumber(PeekChar(interpreter_))) return ReadReal(true);
    if (c == ';') return ReadFunction();
    if (c == '"') return ReadLiteral();
    if (c == '[') SkipComment(interpreter_);
    return HasClass(c, OpChar) && ReadOperator(static_cast<char>(c));
  }

  bool ReadReal(bool negate) {
    double number = 0.0;
    if (ReadNumber(interpreter_, negate, number) == 0) return false;
    receiver_.Real(number);
    return true;
  }

  bool ReadLiteral() {
    CaStringText string;
    ReadStringText(interpreter_, string);
    receiver_.String(string.text);
    return true;
  }

  bool ReadFunction() {
    CaTokenText name;
    ReadRun(interpreter_, NameChar, name);
    return HandOver(FindFunction(name.View()), name);
  }

  /// Most operators are one byte and need no text.
  bool ReadOperator(char first) {
    const std::string_view text = interpreter_.input->AtHand();
    if (!text.empty() && !HasClass(text[0], OpChar) && text[0] != EndOfTransmission) {
      if (const CaOperatorEntry* entry = FindOperator(first); entry != nullptr) {
        receiver_.Operator(*entry);
        return true;
      }
    }
    CaTokenText name;
    name.Append({&first, 1});
    AppendRun(interpreter_, OpChar, name);
    return HandOver(FindOperator(name.View()), name);
  }

  bool HandOver(const CaOperatorEntry* entry, CaTokenText& name) {
    if (entry == nullptr) {
      ReportUnknownOperator(interpreter_, name.Text());
      return false;
    }
    receiver_.Operator(*entry);
    return true;
  }

  /// A variable, or a compound constant when "(" follows directly.
  bool ReadNamed() {
    CaTokenText name;
    ReadRun(interpreter_, NameChar, name);
    if (PeekChar(interpreter_) == '(') return ReadCompound(name);
    receiver_.Variable(name.View());
    return true;
  }

  bool ReadCompound(CaTokenText& name) {
    const CaSpecifierEntry* entry = FindSpecifier(name.View());
    if (entry == nullptr) {
      ReportUnknownSpecifier(interpreter_, name.Text());
      return false;
    }
    CaValue* value = nullptr;
    if (entry->parse(interpreter_, value) == 0) return false;
    receiver_.Compound(value);
    return true;
  }

  CaInterpreter& interpreter_;
  Receiver& receiver_;
};
