#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "calc/recycler.h"

class CaObject;

/// One entry of a `CaList`.
struct CaListNode {
  CaObject* payload;
  CaListNode* next;      // towards the tail; null at the tail
  CaListNode* previous;  // towards the head; null at the head
};

/// A doubly linked list of object pointers. It owns its nodes, made many at a time and used again
/// until the list goes, and never the objects: whoever removes an entry decides what becomes of the
/// object. `head` and `tail` are null exactly when `count` is 0.
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

 private:
  /// Throws std::bad_alloc.
  CaListNode* Take() {
    if (free_ == nullptr) AddNodes();
    CaListNode* node = free_;
    KEL_USED(node);
    free_ = node->next;
    return node;
  }

  void GiveBack(CaListNode* node) {
    node->next = free_;
    free_ = node;
    KEL_UNUSED(node);
  }

  void AddNodes();

  CaListNode* free_ = nullptr;  // the nodes that are in no use, each with the next one
  std::vector<std::unique_ptr<CaListNode[]>> blocks_;
};

// Those that run with every token or every assignment.

inline int CaList::PushFront(CaObject* object) {
  CaListNode* node = nullptr;
  try {
    node = Take();
  } catch (const std::bad_alloc&) {
    return -1;
  }
  *node = {object, head, nullptr};
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
  GiveBack(node);
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
