#include "compound/sector_space.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "compound/format.h"

SectorSpace::SectorSpace(std::uint32_t sectorSize, const SectorSpace& host,
                         const SectorChain& chain)
    : sectorSize_(sectorSize), locked_(MarkFree), host_(&host), hostChain_(&chain) {}

std::uint64_t SectorSpace::EndAfter(std::uint32_t count) const {
  const std::uint64_t fresh = count > freeCount_ ? count - freeCount_ : 0;
  const std::uint64_t after = std::uint64_t{end_} + fresh;
  return end_ <= locked_ && after > locked_ ? after + 1 : after;
}

void SectorSpace::Extend(SectorChain& chain, std::uint32_t count) {
  const std::uint32_t before = chain.Count();
  while (chain.Count() < count) {
    const SectorRun run = Take(count - chain.Count());
    try {
      chain.Append(run);
    } catch (const std::bad_alloc&) {
      Give(run);
      Trim(chain, before);
      throw;
    }
  }
}

void SectorSpace::Trim(SectorChain& chain, std::uint32_t count) {
  while (chain.Count() > count) Give(chain.TakeLast(chain.Count() - count));
}

Extent SectorSpace::Locate(const SectorChain& chain, std::uint64_t offset) const {
  const SectorRun run = chain.From(static_cast<std::uint32_t>(offset / sectorSize_));
  const std::uint64_t within = offset % sectorSize_;
  const std::uint64_t size = std::uint64_t{run.count} * sectorSize_ - within;
  const std::uint64_t start = std::uint64_t{run.start} * sectorSize_ + within;
  if (host_ == nullptr) return {start + sectorSize_, size};
  const Extent extent = host_->Locate(*hostChain_, start);
  return {extent.offset, std::min(extent.size, size)};
}

/// Up to `count` neighbouring sectors, free ones first.
SectorRun SectorSpace::Take(std::uint32_t count) {
  if (!freeRuns_.empty()) {
    auto run = freeRuns_.begin();
    const std::uint32_t start = run->first;
    const std::uint32_t taken = std::min(count, run->second);
    if (taken == run->second) {
      freeRuns_.erase(run);
    } else {
      auto node = freeRuns_.extract(run);
      node.key() += taken;
      node.mapped() -= taken;
      freeRuns_.insert(std::move(node));
    }
    freeCount_ -= taken;
    return {start, taken};
  }
  if (end_ == locked_) ++end_;
  const std::uint32_t taken = end_ < locked_ ? std::min(count, locked_ - end_) : count;
  end_ += taken;
  return {end_ - taken, taken};
}

/// Never fails; at worst the sectors stay unused.
void SectorSpace::Give(SectorRun run) {
  if (run.count == 0) return;
  try {
    const auto [place, fresh] = freeRuns_.emplace(run.start, run.count);
    freeCount_ += run.count;
    const auto next = std::next(place);
    if (next != freeRuns_.end() && place->first + place->second == next->first) {
      place->second += next->second;
      freeRuns_.erase(next);
    }
    if (place != freeRuns_.begin()) {
      const auto previous = std::prev(place);
      if (previous->first + previous->second == place->first) {
        previous->second += place->second;
        freeRuns_.erase(place);
      }
    }
    ShrinkEnd();
  } catch (const std::bad_alloc&) {
    // The file's FAT is made from the chains alone, so lost sectors are merely unused.
  }
}

void SectorSpace::ShrinkEnd() {
  while (!freeRuns_.empty()) {
    const auto last = std::prev(freeRuns_.end());
    const std::uint32_t lastEnd = last->first + last->second;
    const bool touches = lastEnd == end_ || (lastEnd == locked_ && end_ == locked_ + 1);
    if (!touches) return;
    end_ = last->first;
    freeCount_ -= last->second;
    freeRuns_.erase(last);
  }
}
