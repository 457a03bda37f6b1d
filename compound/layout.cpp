#include "compound/layout.h"

#include <algorithm>

std::uint32_t LockedSector(const CompoundParameters& parameters) {
  return static_cast<std::uint32_t>(parameters.lockOffset / parameters.sectorSize - 1);
}

std::uint64_t LargestFile(const CompoundParameters& parameters) {
  return parameters.sectorSize == 512 ? LockedSector(parameters) : MaxRegularSector;
}

TableCounts CountTables(const CompoundParameters& parameters, std::uint64_t end,
                        std::uint64_t entries, std::uint64_t miniSectors) {
  const auto sectorsFor = [&](std::uint64_t count, std::uint64_t perSector) {
    return static_cast<std::uint32_t>((count + perSector - 1) / perSector);
  };
  const std::uint64_t marks = parameters.sectorSize / sizeof(std::uint32_t);
  const std::uint32_t locked = LockedSector(parameters);
  TableCounts counts;
  counts.directory = sectorsFor(entries, parameters.sectorSize / sizeof(CompoundEntryRecord));
  counts.miniFat = sectorsFor(miniSectors, marks);
  const std::uint64_t fixed = end + counts.directory + counts.miniFat;
  // The FAT covers itself and the DIFAT, so both grow until they fit.
  for (;;) {
    counts.total = fixed + counts.fat + counts.difat;
    if (end <= locked && counts.total > locked) ++counts.total;
    const std::uint32_t fat = sectorsFor(counts.total, marks);
    const std::uint32_t difat =
        fat > HeaderDifatEntries ? sectorsFor(fat - HeaderDifatEntries, marks - 1) : 0;
    if (fat == counts.fat && difat == counts.difat) return counts;
    counts.fat = std::max(fat, counts.fat);
    counts.difat = std::max(difat, counts.difat);
  }
}
