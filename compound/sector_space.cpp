#include "compound/sector_space.h"

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
