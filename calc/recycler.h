#pragma once

#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define KEL_CHECKS_ADDRESSES
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KEL_CHECKS_ADDRESSES
#endif
#endif

/// Storage for objects that come and go with every token: what is given back is handed out again
/// first. Holds as much as was ever in use at once, and releases it at the end of the process.
/// Under the address sanitizer every object has storage of its own, so that a stale pointer shows.
template <typename T>
class CaRecycler {
 public:
  static void* Take() {
    Slot* slot = free.first;
    if (slot == nullptr) return ::operator new(sizeof(T));
    free.first = slot->next;
    return slot;
  }

  static void GiveBack(void* storage) {
#ifdef KEL_CHECKS_ADDRESSES
    ::operator delete(storage);
#else
    free.first = ::new (storage) Slot{free.first};
#endif
  }

 private:
  struct Slot {
    Slot* next;
  };

  struct FreeList {
    Slot* first = nullptr;
    ~FreeList() {
      while (first != nullptr) {
        Slot* slot = first;
        first = slot->next;
        ::operator delete(slot);
      }
    }
  };

  static_assert(sizeof(T) >= sizeof(Slot));
  inline static constinit FreeList free;
};
