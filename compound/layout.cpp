#include "compound/layout.h"

#include <algorithm>

namespace {

std::uint32_t SectorsFor(std::uint64_t count, std::uint64_t perSector) {
  return static_cast<std::uint32_t>((count + perSector - 1) / perSector);
}

}  // namespace

std::uint32_t LockedSector(const CompoundParameters& parameters) {
  return static_cast<std::uint32_t>(parameters.lockOffset / parameters.sectorSize - 1);
}

std::uint64_t LargestFile(const CompoundParameters& parameters) {
  return parameters.sectorSize == 512 ? LockedSector(parameters) : MaxRegularSector;
}

TableCounts CountTables(const CompoundParameters& parameters, const ContentCounts& content) {
  const std::uint32_t marks = parameters.MarksPerSector();
  const std::uint32_t locked = LockedSector(parameters);
  TableCounts counts;
  counts.directory = SectorsFor(content.entries, parameters.EntriesPerSector());
  counts.miniFat = SectorsFor(content.miniSectors, marks);
  const std::uint64_t fixed = content.sectors + counts.directory + counts.miniFat;
  // The FAT covers itself and the DIFAT, so both grow until they fit.
  for (;;) {
    counts.total = fixed + counts.fat + counts.difat;
    if (content.sectors <= locked && counts.total > locked) ++counts.total;
    const std::uint32_t fat = SectorsFor(counts.total, marks);
    const std::uint32_t difat =
        fat > HeaderDifatEntries ? SectorsFor(fat - HeaderDifatEntries, marks - 1) : 0;
    if (fat == counts.fat && difat == counts.difat) return counts;
    counts.fat = std::max(fat, counts.fat);
    counts.difat = std::max(difat, counts.difat);
  }
}

std::uint64_t FileSize(const CompoundParameters& parameters, const TableCounts& tables) {
  return (tables.total + 1) * parameters.sectorSize;
}
