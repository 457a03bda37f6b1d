#include "calc/interpreter.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "calc/character_source.h"
#include "calc/object.h"
#include "calc/value_print.h"

namespace {

constinit const volatile std::sig_atomic_t NeverInterrupted = 0;

}  // namespace

CaInterpreter::CaInterpreter()
    : input(&CaCharacterSource::StandardInput()),
      output(stdout),
      errors(stderr),
      show(PrintValue),
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
      return PushOwned(new CaVariable(object.Name(), object.Value()));
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

const CaValue* CaInterpreter::FindVariable(const char* name) const {
  return FindVariable(FindPooledName(name));
}

const char* CaInterpreter::VariableNameAt(int position) const {
  const CaListNode* node = variables.head;
  for (int at = 0; node != nullptr && at < position; ++at) node = node->next;
  return node == nullptr || node->payload == nullptr ? nullptr : node->payload->Name();
}

void CaInterpreter::DefineVariable(const CaVariable& variable) {
  DefineVariable(CaPooledName{variable.name}, variable.value);
}

void CaInterpreter::DefineVariable(CaPooledName name, const CaValue& value) {
  if (name.text != nullptr) DefineOwned(std::make_unique<CaVariable>(name, value));
}

void CaInterpreter::DefineOwned(std::unique_ptr<CaVariable> variable) {
  const CaPooledName name{variable->name};
  if (name.text == nullptr) return;
  CaListNode* old = index.Find(variables, name);
  if (old == nullptr) return AddVariable(std::move(variable));
  delete static_cast<CaVariable*>(std::exchange(old->payload, variable.release()));
  variables.MoveToFront(old);
  index.StoreMoved(variables);
}

void CaInterpreter::AddVariable(std::unique_ptr<CaVariable> variable) {
  if (variables.PushFront(variable.get()) > 0) {
    index.Store(variables, {variable.release()->name});
  } else {
    index.Forget();
  }
}

void CaInterpreter::DestroyVariables() {
  for (const CaListNode* node = variables.head; node != nullptr; node = node->next) {
    delete static_cast<CaVariable*>(node->payload);
  }
  variables.Clear();
  index.Forget();
}
