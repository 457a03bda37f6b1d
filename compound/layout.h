#pragma once

#include <cstdint>

#include "compound/format.h"

/// What a file's tables describe.
struct ContentCounts {
  std::uint64_t sectors = 0;      // of the file, up to the end of the streams
  std::uint64_t entries = 1;      // of the directory, the root included
  std::uint64_t miniSectors = 0;  // of the mini stream
};

/// The sectors that the tables take behind those of the streams.
struct TableCounts {
  std::uint32_t directory = 0;
  std::uint32_t miniFat = 0;
  std::uint32_t fat = 0;
  std::uint32_t difat = 0;
  std::uint64_t total = 0;  // of the whole file but for its header, streams included
};

/// The number of the sector that must not hold data because its bytes serve as locks.
std::uint32_t LockedSector(const CompoundParameters& parameters);

/// The greatest number of sectors that a file may have: version 3 ends below the lock.
std::uint64_t LargestFile(const CompoundParameters& parameters);

TableCounts CountTables(const CompoundParameters& parameters, const ContentCounts& content);

/// The bytes of a file with these tables.
std::uint64_t FileSize(const CompoundParameters& parameters, const TableCounts& tables);
