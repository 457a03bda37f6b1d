#include "calc/variable_index.h"

#include <algorithm>
#include <cstddef>

#include "calc/object.h"

void CaVariableIndex::Store(const CaList& variables) {
  Put(variables.head);
  head_ = variables.head;
  count_ = variables.count;
}

void CaVariableIndex::Forget() {
  nodes_.clear();
  head_ = nullptr;
  count_ = 0;
}

void CaVariableIndex::Put(CaListNode* node) {
  const std::size_t number = NumberOf({node->payload->Name()});
  if (number >= nodes_.size()) nodes_.resize(std::max(number + 1, nodes_.size() * 2));
  nodes_[number] = node;
}

void CaVariableIndex::Rebuild(const CaList& variables) {
  Forget();
  for (CaListNode* node = variables.tail; node != nullptr; node = node->previous) {
    if (node->payload != nullptr && node->payload->Name() != nullptr) Put(node);
  }
  head_ = variables.head;
  count_ = variables.count;
}
