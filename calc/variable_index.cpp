#include "calc/variable_index.h"

#include "calc/list.h"
#include "calc/object.h"

void CaVariableIndex::Forget() {
  nodes_.clear();
  head_ = nullptr;
  count_ = 0;
}

void CaVariableIndex::Rebuild(const CaList& variables) {
  Forget();
  for (CaListNode* node = variables.tail; node != nullptr; node = node->previous) {
    const char* name = node->payload == nullptr ? nullptr : node->payload->Name();
    if (name != nullptr) Put(node, {name});
  }
  head_ = variables.head;
  count_ = variables.count;
}
