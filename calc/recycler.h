#pragma once

#include <new>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define KEL_CHECKS_ADDRESSES
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KEL_CHECKS_ADDRESSES
#endif
#endif

// What is in no use must not be touched; the address sanitizer watches over it.
#ifdef KEL_CHECKS_ADDRESSES
#include <sanitizer/asan_interface.h>
#define KEL_UNUSED(object) ASAN_POISON_MEMORY_REGION(object, sizeof *(object))
#define KEL_USED(object) ASAN_UNPOISON_MEMORY_REGION(object, sizeof *(object))
#else
#define KEL_UNUSED(object) static_cast<void>(0)
#define KEL_USED(object) static_cast<void>(0)
#endif

/// Storage for objects that come and go with every token: what is given back is handed out again
/// first, on the thread that gave it back. Holds as much as was ever in use at once, and releases
/// it at the end of a thread that called `ReleaseAtThreadEnd`, as every run of a program does.
/// Under the address sanitizer every object has storage of its own, so that a stale pointer shows.
template <typename T>
class CaRecycler {
 public:
  static void* Take() {
    Slot* slot = free_;
    if (slot == nullptr) return ::operator new(sizeof(T));
    free_ = slot->next;
    return slot;
  }

  static void GiveBack(void* storage) {
#ifdef KEL_CHECKS_ADDRESSES
    ::operator delete(storage);
#else
    free_ = ::new (storage) Slot{free_};
#endif
  }

  static void ReleaseAtThreadEnd() { static thread_local const Release release; }

 private:
  struct Slot {
    Slot* next;
  };

  struct Release {
    ~Release() {
      while (free_ != nullptr) ::operator delete(std::exchange(free_, free_->next));
    }
  };

  static_assert(sizeof(T) >= sizeof(Slot));

  // Without a destructor of its own it is reached like a plain variable.
#ifdef __ELF__
  [[gnu::tls_model("initial-exec")]]
#endif
  inline static thread_local constinit Slot* free_ = nullptr;
};
