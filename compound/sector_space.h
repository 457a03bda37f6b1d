#pragma once

#include <cstdint>
#include <map>

#include "compound/format.h"
#include "compound/sector_chain.h"

/// Which sectors are in use: all below End() but the free runs and the locked sector. Serves the
/// file's sectors and the mini stream's alike.
class SectorSpace {
 public:
  explicit SectorSpace(std::uint32_t lockedSector) : locked_(lockedSector) {}

  std::uint32_t End() const { return end_; }

  /// What End() will be after taking `count` sectors.
  std::uint64_t EndAfter(std::uint32_t count) const;

  /// Takes up to `count` neighbouring sectors, from the free ones while there are any.
  SectorRun Take(std::uint32_t count);

  /// Gives sectors back. Never fails; at worst they stay unused.
  void Give(SectorRun run);

 private:
  void ShrinkEnd();

  std::uint32_t locked_;
  std::uint32_t end_ = 0;
  std::uint32_t freeCount_ = 0;
  std::map<std::uint32_t, std::uint32_t> freeRuns_;  // start, count; never touching each other
};
