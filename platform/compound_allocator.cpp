#include "platform/compound_allocator.h"

#include <algorithm>
#include <iterator>
#include <new>

std::uint64_t SectorSpace::EndAfter(std::uint32_t count) const {
  const std::uint64_t fresh = count > freeCount ? count - freeCount : 0;
  const std::uint64_t after = std::uint64_t{end} + fresh;
  return end <= locked && after > locked ? after + 1 : after;
}

SectorRun SectorSpace::Take(std::uint32_t count) {
  if (!freeRuns.empty()) {
    auto run = freeRuns.begin();
    const std::uint32_t start = run->first;
    const std::uint32_t taken = std::min(count, run->second);
    if (taken == run->second) {
      freeRuns.erase(run);
    } else {
      auto node = freeRuns.extract(run);
      node.key() += taken;
      node.mapped() -= taken;
      freeRuns.insert(std::move(node));
    }
    freeCount -= taken;
    return {start, taken};
  }
  if (end == locked) ++end;
  const std::uint32_t taken = end < locked ? std::min(count, locked - end) : count;
  end += taken;
  return {end - taken, taken};
}

void SectorSpace::Give(SectorRun run) {
  if (run.count == 0) return;
  try {
    const auto [place, fresh] = freeRuns.emplace(run.start, run.count);
    freeCount += run.count;
    const auto next = std::next(place);
    if (next != freeRuns.end() && place->first + place->second == next->first) {
      place->second += next->second;
      freeRuns.erase(next);
    }
    if (place != freeRuns.begin()) {
      const auto previous = std::prev(place);
      if (previous->first + previous->second == place->first) {
        previous->second += place->second;
        freeRuns.erase(place);
      }
    }
    ShrinkEnd();
  } catch (const std::bad_alloc&) {
    // The file's FAT is made from the chains alone, so lost sectors are merely unused.
  }
}

void SectorSpace::ShrinkEnd() {
  while (!freeRuns.empty()) {
    const auto last = std::prev(freeRuns.end());
    const std::uint32_t lastEnd = last->first + last->second;
    const bool touches = lastEnd == end || (lastEnd == locked && end == locked + 1);
    if (!touches) return;
    end = last->first;
    freeCount -= last->second;
    freeRuns.erase(last);
  }
}

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
