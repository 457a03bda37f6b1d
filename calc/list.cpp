#include "calc/list.h"

#include <utility>

namespace {

constexpr std::size_t BlockSize = 64;  // nodes

}  // namespace

CaObject* CaList::PopBack() {
  if (tail == nullptr) return nullptr;
  CaObject* payload = tail->payload;
  Unlink(tail);
  return payload;
}

int CaList::Remove(CaListNode* node) {
  if (node == nullptr) return 0;
  for (const CaListNode* member = head; member != nullptr; member = member->next) {
    if (member != node) continue;
    Unlink(node);
    return 1;
  }
  return 0;
}

void CaList::Unlink(CaListNode* node) {
  (node->previous == nullptr ? head : node->previous->next) = node->next;
  (node->next == nullptr ? tail : node->next->previous) = node->previous;
  GiveBack(node);
  --count;
  ++changes;
}

void CaList::Clear() {
  while (head != nullptr) PopFront();
}

void CaList::AddNodes() {
  auto nodes = std::make_unique<CaListNode[]>(BlockSize);
  blocks_.push_back(std::move(nodes));
  for (std::size_t i = 0; i < BlockSize; ++i) GiveBack(&blocks_.back()[i]);
}
