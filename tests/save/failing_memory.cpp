#include "tests/save/failing_memory.h"

#include <climits>
#include <cstdlib>
#include <new>

namespace {

int untilFailure = INT_MAX;
bool goesOn = false;
bool failed = false;

bool Fails() {
  if (untilFailure-- > 0) return false;
  if (!goesOn) untilFailure = INT_MAX;
  failed = true;
  return true;
}

}  // namespace

FailingMemory::FailingMemory(int first, bool allAfter) {
  failed = false;
  goesOn = allAfter;
  untilFailure = first;
}

FailingMemory::~FailingMemory() {
  goesOn = false;
  untilFailure = INT_MAX;
}

bool FailingMemory::Reached() const { return failed; }

// The linker leads every malloc of this program's own objects here.
extern "C" {
void* __real_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __wrap_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __wrap_malloc(std::size_t size) { return Fails() ? nullptr : __real_malloc(size); }
}

// All forms, as a checker of memory demands.
void* operator new(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
