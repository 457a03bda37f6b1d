#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "calc/recycler.h"

class CaObject;

/// One entry of a `CaList`.
struct CaListNode {
  CaObject* payload;
  CaListNode* next;      // towards the tail; null at the tail
  CaListNode* previous;  // towards the head; null at the head

  static void* operator new(std::size_t) { return CaRecycler<CaListNode>::Take(); }
  static void operator delete(void* storage) { CaRecycler<CaListNode>::GiveBack(storage); }
};

/// A doubly linked list of object pointers. It owns its nodes and never the objects: whoever
/// removes an entry decides what becomes of the object. `head` and `tail` are null exactly when
/// `count` is 0.
class CaList {
 public:
  CaList() = default;
  ~CaList() { Clear(); }
  CaList(const CaList&) = delete;
  CaList& operator=(const CaList&) = delete;

  /// 1 when the node was added before the head, -1 when no node could be allocated.
  int PushFront(CaObject* object);

  /// The payload of the removed node, or null when the list was empty.
  CaObject* PopFront();
  CaObject* PopBack();

  /// 1 when `node` belonged to this list and was removed, 0 otherwise. Walks the list.
  int Remove(CaListNode* node);

  /// Removes `node`, which must belong to this list, without walking it.
  void Unlink(CaListNode* node);

  /// Makes `node`, which must belong to this list, the head, without walking the list.
  void MoveToFront(CaListNode* node);

  /// Removes every node.
  void Clear();

  CaListNode* head = nullptr;
  CaListNode* tail = nullptr;
  std::int32_t count = 0;
  std::uint64_t changes = 0;  // grows with every node that comes, goes or moves
};

// Those that run with every token or every assignment.

inline int CaList::PushFront(CaObject* object) {
  CaListNode* node = nullptr;
  try {
    node = new CaListNode{object, head, nullptr};
  } catch (const std::bad_alloc&) {
    return -1;
  }
  (head == nullptr ? tail : head->previous) = node;
  head = node;
  ++count;
  ++changes;
  return 1;
}

inline CaObject* CaList::PopFront() {
  CaListNode* node = head;
  if (node == nullptr) return nullptr;
  CaObject* payload = node->payload;
  head = node->next;
  (head == nullptr ? tail : head->previous) = nullptr;
  --count;
  ++changes;
  delete node;
  return payload;
}

inline void CaList::MoveToFront(CaListNode* node) {
  if (node == head) return;
  node->previous->next = node->next;
  (node->next == nullptr ? tail : node->next->previous) = node->previous;
  node->previous = nullptr;
  node->next = head;
  head->previous = node;
  head = node;
  ++changes;
}
