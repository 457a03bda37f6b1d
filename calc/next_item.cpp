#include "calc/next_item.h"

#include "calc/object.h"

namespace {

/// `text` with a zero behind it.
const char* Terminated(CaInterpreter& interpreter, std::string_view text) {
  CaTokenText& token = interpreter.token;
  if (text.data() != token.View().data()) {
    token.Begin(CaTokenText::LongestName);
    token.Append(text);
  }
  return token.Text();
}

}  // namespace

const CaOperatorEntry* OperatorCalled(CaInterpreter& interpreter, std::string_view name) {
  const CaName* known = interpreter.table.names.Find(name);
  if (known != nullptr && known->entry != nullptr) return known->entry;
  ReportUnknownOperator(interpreter, Terminated(interpreter, name));
  return nullptr;
}

CaValue* ReadCompound(CaInterpreter& interpreter, std::string_view name) {
  const CaName* known = interpreter.table.names.Find(name);
  if (known == nullptr || known->specifier == nullptr) {
    ReportUnknownSpecifier(interpreter, Terminated(interpreter, name));
    return nullptr;
  }
  CaValue* value = nullptr;
  try {
    return known->specifier->parse(interpreter, value) == 0 ? nullptr : value;
  } catch (EndOfInput& end) {
    end.within = CaUnfinished::Constant;
    throw;
  }
}

CaUnfinished UnfinishedOf(CaTokenStart start) {
  switch (start) {
    case CaTokenStart::String:
      return CaUnfinished::String;
    case CaTokenStart::Comment:
      return CaUnfinished::Comment;
    case CaTokenStart::End:
      return CaUnfinished::Nothing;
    default:
      return CaUnfinished::Token;
  }
}
