#include "calc/list.h"

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
  delete node;
  --count;
  ++changes;
}

void CaList::Clear() {
  while (head != nullptr) PopFront();
}
