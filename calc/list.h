#pragma once

#include <cstddef>
#include <cstdint>

class CaObject;

/// One entry of a `CaList`.
struct CaListNode {
  CaObject* payload;
  CaListNode* next;      // towards the tail; null at the tail
  CaListNode* previous;  // towards the head; null at the head

  static void* operator new(std::size_t size);
  static void operator delete(void* storage);
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

  /// Removes every node.
  void Clear();

  CaListNode* head = nullptr;
  CaListNode* tail = nullptr;
  std::int32_t count = 0;
};
