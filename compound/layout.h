#pragma once

#include <cstdint>

#include "compound/format.h"

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
