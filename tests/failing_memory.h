#pragma once

#include <cstddef>

/// A program that uses these is linked with --wrap=malloc.

/// While it lives, allocations of this process fail: the one of number `first` (from 0), or all
/// from that one on.
class FailingMemory {
 public:
  FailingMemory(int first, bool allAfter);
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
  ~FailingMemory();

  /// Whether one has failed.
  bool Reached() const;
};

/// Measures, while it lives, the memory that objects take.
class MeasuredMemory {
 public:
  MeasuredMemory();

  /// The most bytes that there ever were beyond those at the beginning.
  std::size_t Most() const;

 private:
  std::size_t before_;
};
