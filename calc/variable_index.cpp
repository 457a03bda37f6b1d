#include "calc/variable_index.h"

#include "calc/list.h"
#include "calc/object.h"

CaListNode* CaVariableIndex::Find(const CaList& variables, CaPooledName name) {
  if (variables.head != head_ || variables.count != count_) Rebuild(variables);
  return slots_.empty() ? nullptr : SlotFor(name).node;
}

void CaVariableIndex::Store(const CaList& variables) {
  Put({variables.head->payload->Name()}, variables.head);
  head_ = variables.head;
  count_ = variables.count;
}

void CaVariableIndex::Forget() {
  slots_.clear();
  used_ = 0;
  head_ = nullptr;
  count_ = 0;
}

CaVariableIndex::Slot& CaVariableIndex::SlotFor(CaPooledName name) {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = HashOf(name) & mask;
  while (slots_[at].name.text != nullptr && slots_[at].name.text != name.text) at = (at + 1) & mask;
  return slots_[at];
}

void CaVariableIndex::Put(CaPooledName name, CaListNode* node) {
  if ((used_ + 1) * 2 > slots_.size()) Grow();
  Slot& slot = SlotFor(name);
  if (slot.name.text == nullptr) ++used_;
  slot = {name, node};
}

void CaVariableIndex::Rebuild(const CaList& variables) {
  Forget();
  for (CaListNode* node = variables.tail; node != nullptr; node = node->previous) {
    if (node->payload != nullptr && node->payload->Name() != nullptr) {
      Put({node->payload->Name()}, node);
    }
  }
  head_ = variables.head;
  count_ = variables.count;
}

void CaVariableIndex::Grow() {
  std::vector<Slot> old(slots_.empty() ? 64 : slots_.size() * 2);
  old.swap(slots_);
  for (const Slot& slot : old) {
    if (slot.name.text != nullptr) SlotFor(slot.name) = slot;
  }
}
