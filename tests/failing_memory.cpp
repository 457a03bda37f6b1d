#include "tests/failing_memory.h"

#include <malloc.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>

namespace {

int untilFailure = INT_MAX;
bool goesOn = false;
bool failed = false;
std::size_t inUse = 0, most = 0;  // bytes of objects

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

MeasuredMemory::MeasuredMemory() : before_(most = inUse) {}

std::size_t MeasuredMemory::Most() const { return most - before_; }

// The linker leads every malloc of this program's own objects here.
extern "C" {
void* __real_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier)
// Seen by all, as the linker demands it where a shared library of the program calls malloc, too.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
[[gnu::visibility("default")]] void* __wrap_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) { return Fails() ? nullptr : __real_malloc(size); }
}

namespace {

void* Allocate(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory != nullptr) most = std::max(most, inUse += malloc_usable_size(memory));
  return memory;
}

void Free(void* memory) {
  inUse -= malloc_usable_size(memory);
  std::free(memory);
}

}  // namespace

// All forms, as a checker of memory demands.
void* operator new(std::size_t size) {
  void* memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
