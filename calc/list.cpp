#include "calc/list.h"

#include <new>

#include "calc/recycler.h"

void* CaListNode::operator new(std::size_t) { return CaRecycler<CaListNode>::Take(); }
void CaListNode::operator delete(void* storage) { CaRecycler<CaListNode>::GiveBack(storage); }

int CaList::PushFront(CaObject* object) {
  CaListNode* node = nullptr;
  try {
    node = new CaListNode{object, head, nullptr};
  } catch (const std::bad_alloc&) {
    return -1;
  }
  (head == nullptr ? tail : head->previous) = node;
  head = node;
  ++count;
  return 1;
}

CaObject* CaList::PopFront() {
  if (head == nullptr) return nullptr;
  CaObject* payload = head->payload;
  Unlink(head);
  return payload;
}

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
}

void CaList::Clear() {
  while (head != nullptr) PopFront();
}
