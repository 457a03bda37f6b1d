#pragma once

#include <cstddef>
#include <string_view>

#include "calc/char_class.h"
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
  /// Reads what begins with `c`; true when it was an item.
  bool ReadFrom(int c) {
    switch (TokenStartOf(c)) {
      case CaTokenStart::Number:
        PushBackChar(interpreter_);
        return ReadReal(false);
      case CaTokenStart::Name:
        PushBackChar(interpreter_);
        return ReadNamed();
      case CaTokenStart::Minus:
        if (TokenStartOf(PeekChar(interpreter_)) == CaTokenStart::Number) return ReadReal(true);
        return ReadOperator('-');
      case CaTokenStart::Operator:
        return ReadOperator(static_cast<char>(c));
      case CaTokenStart::Function:
        return ReadFunction();
      case CaTokenStart::String:
        return ReadLiteral();
      case CaTokenStart::Comment:
        SkipComment(interpreter_);
        return false;
      case CaTokenStart::End:
        EndInput(interpreter_);
      case CaTokenStart::Blank:
      case CaTokenStart::None:
        break;
    }
    return false;
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
    return ReadLongOperator(first);
  }

  /// One of any length, wherever it ends.
  bool ReadLongOperator(char first) {
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
    const std::string_view text = interpreter_.input->AtHand();
    const std::size_t length = RunLength(text, NameChar);
    if (length == 0 || length > CaTokenText::Longest || text[length] == '(') {
      return ReadLongNamed();
    }
    interpreter_.input->Skip(length);
    receiver_.Variable(text.substr(0, length));
    return true;
  }

  /// The same for a name of any length, wherever it ends.
  bool ReadLongNamed() {
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
