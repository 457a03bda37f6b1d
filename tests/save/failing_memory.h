#pragma once

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
