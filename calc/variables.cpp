#include "calc/variables.h"

#include <cstring>
#include <utility>

const CaValue* CaVariables::Find(std::string_view name) {
  if (list_.changes != seen_) LookAnew();  // which may bring a name that was never met
  const CaName* known = names.Find(name);
  return known == nullptr ? &NothingValue : Find(*known);
}

const char* CaVariables::NameAt(int position) const {
  const CaListNode* node = list_.head;
  for (int at = 0; node != nullptr && at < position; ++at) node = node->next;
  return node == nullptr || node->payload == nullptr ? nullptr : node->payload->Name();
}

void CaVariables::Define(std::unique_ptr<CaVariable> variable, const CaValue& value) {
  if (variable->name == nullptr) return;
  variable->value = value;
  CaName& name = variable->known == nullptr ? names.Intern(variable->name) : *variable->known;
  if (CaListNode* old = NodeOf(name); old != nullptr) {
    delete static_cast<CaVariable*>(std::exchange(old->payload, variable.release()));
    list_.MoveToFront(old);
  } else if (list_.PushFront(variable.get()) > 0) {
    static_cast<void>(variable.release());  // the list owns it now
    name.variable = list_.head;
  }
  seen_ = list_.changes;
}

void CaVariables::Destroy() {
  for (const CaListNode* node = list_.head; node != nullptr; node = node->next) {
    delete static_cast<CaVariable*>(node->payload);
  }
  list_.Clear();
  names.ForgetVariables();
  seen_ = list_.changes;
}

bool CaVariables::BearsText(const CaVariable& variable, const CaName& name) {
  return variable.name != nullptr && std::strcmp(variable.name, name.Text()) == 0;
}

void CaVariables::LookAnew() {
  names.ForgetVariables();
  for (CaListNode* node = list_.tail; node != nullptr; node = node->previous) {
    const char* name = node->payload == nullptr ? nullptr : node->payload->Name();
    if (name != nullptr) names.Intern(name).variable = node;
  }
  seen_ = list_.changes;
}
