#include "calc/interpreter.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "calc/character_source.h"
#include "calc/object.h"
#include "calc/value_print.h"

namespace {

constinit const CaInterruptFlag NeverInterrupted = 0;

CaVariable* CopyOf(CaInterpreter& interpreter, const CaVariable& variable) {
  if (variable.name == nullptr) return new CaVariable(nullptr, &variable.value);
  return new CaVariable(interpreter.table.names.Intern(variable.name), variable.value);
}

void KeepAsPrinted(std::FILE* file, const CaInterpreter&, const CaValue& value) {
  value.Print(file);
}

}  // namespace

CaInterpreter::CaInterpreter()
    : input(&CaCharacterSource::StandardInput()),
      output(stdout),
      errors(stderr),
      show(PrintValue),
      keep(KeepAsPrinted),
      interruptRequested(&NeverInterrupted) {}

CaInterpreter::~CaInterpreter() {
  PopValues(Depth());
  DestroyVariables();
}

const CaObject* CaInterpreter::Peek(int position) const {
  if (stack.count <= position) return &NothingValue;
  const CaListNode* node = stack.head;
  for (int at = 1; node != nullptr && at <= position; ++at) node = node->next;
  return node == nullptr ? &NothingValue : node->payload;
}

void CaInterpreter::PopValues(int count) {
  for (int left = std::min(count, stack.count); left > 0; --left) PopValue();
}

void CaInterpreter::PushCopy(const CaObject& object) {
  switch (object.Kind()) {
    case KindValue: {
      auto copy = std::make_unique<CaValue>();
      *copy = static_cast<const CaValue&>(object);
      return PushOwned(copy.release());
    }
    case KindVariable:
      return PushOwned(CopyOf(*this, static_cast<const CaVariable&>(object)));
    case KindOperator:
      return PushOwned(new CaOperator(static_cast<const CaOperator&>(object)));
    default:
      return;
  }
}

void CaInterpreter::Replace(int count, CaValue* result) {
  // The result takes over the node of its deepest operand.
  for (int left = count; left > 1; --left) PopValue();
  DestroyAsValue(std::exchange(stack.head->payload, result));
}

void CaInterpreter::DefineVariable(const CaVariable& variable) {
  table.Define(std::unique_ptr<CaVariable>(CopyOf(*this, variable)), variable.value);
}
