#pragma once

#include <cstdint>
#include <map>

#include "platform/compound_format.h"
#include "platform/compound_runs.h"

/// Which sectors are in use: all below End() but the free runs and the locked sector. Serves the
/// file's sectors and the mini stream's alike.
class SectorSpace {
 public:
  explicit SectorSpace(std::uint32_t lockedSector) : locked(lockedSector) {}

  std::uint32_t End() const { return end; }

  /// What End() will be after taking `count` sectors.
  std::uint64_t EndAfter(std::uint32_t count) const;

  /// Takes up to `count` neighbouring sectors, from the free ones while there are any.
  SectorRun Take(std::uint32_t count);

  /// Gives sectors back. Never fails; at worst they stay unused.
  void Give(SectorRun run);

 private:
  void ShrinkEnd();

  std::uint32_t locked;
  std::uint32_t end = 0;
  std::uint32_t freeCount = 0;
  std::map<std::uint32_t, std::uint32_t> freeRuns;  // start, count; never touching each other
};

/// The sectors that the file's own tables take behind `end` sectors of streams.
struct TableCounts {
  std::uint32_t directory = 0;
  std::uint32_t miniFat = 0;
  std::uint32_t fat = 0;
  std::uint32_t difat = 0;
  std::uint64_t total = 0;  // of the whole file, streams included
};

/// The sector that must not hold data because its bytes serve as locks.
std::uint32_t LockedSector(const CompoundParameters& parameters);

/// The greatest number of sectors that a file may have: version 3 ends below the lock.
std::uint64_t LargestFile(const CompoundParameters& parameters);

TableCounts CountTables(const CompoundParameters& parameters, std::uint64_t end,
                        std::uint64_t entries, std::uint64_t miniSectors);
