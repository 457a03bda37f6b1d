#include "compound/read_document.h"

#include <algorithm>

namespace {

/// The sectors, of 2^shift bytes each, that `most` bytes from `offset` on touch, as far as one run
/// can have them.
std::uint32_t SectorsOf(std::uint64_t offset, std::uint64_t most, unsigned shift) {
  const std::uint64_t mask = (std::uint64_t{1} << shift) - 1;
  const std::uint64_t sectors =
      (most >> shift) + (((offset & mask) + (most & mask) + mask) >> shift);
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(sectors, MaxRegularSector));
}

}  // namespace

Outcome ReadDocument::Open(const char* path, bool exclusive) {
  Outcome outcome = source_.Open(path, exclusive);
  if (outcome != Outcome::Done) return outcome;
  chains_ = std::make_unique<Chains>(source_);
  outcome = directory_.Read(source_, chains_->fat);
  // Relaxed: the root's size is to be that of the mini stream. POI up to 5.3 tells too small a one;
  // the chain is what counts.
  miniStream_ = std::make_unique<FoundChain>(directory_.Root()->start);
  return outcome;
}

Outcome ReadDocument::Locate(FoundChain& chain, std::uint64_t offset, std::uint64_t most,
                             Extent* extent) {
  const unsigned shift = source_.SectorShift();
  const std::uint64_t index = offset >> shift;
  if (index >= source_.SectorCount()) return Outcome::Corrupt;
  SectorRun run;
  const Outcome outcome = chain.Find(chains_->fat, static_cast<std::uint32_t>(index),
                                     SectorsOf(offset, most, shift), &run);
  if (outcome != Outcome::Done) return outcome;
  const std::uint64_t within = offset & (source_.SectorSize() - 1);
  extent->offset = source_.OffsetOf(run.start) + within;
  extent->size = std::min(most, (std::uint64_t{run.count} << shift) - within);
  return Outcome::Done;
}

Outcome ReadDocument::LocateMini(FoundChain& chain, std::uint64_t offset, std::uint64_t most,
                                 Extent* extent) {
  SectorRun run;
  const Outcome outcome =
      chain.Find(chains_->miniFat, static_cast<std::uint32_t>(offset >> MiniSectorShift),
                 SectorsOf(offset, most, MiniSectorShift), &run);
  if (outcome != Outcome::Done) return outcome;
  const std::uint64_t within = offset & (MiniSectorSize - 1);
  const std::uint64_t size = (std::uint64_t{run.count} << MiniSectorShift) - within;
  return Locate(*miniStream_, (std::uint64_t{run.start} << MiniSectorShift) + within,
                std::min(most, size), extent);
}

Outcome ReadDocument::Read(CompoundEntry& stream, std::uint64_t offset, void* data,
                           std::size_t size, std::size_t* done) {
  *done = 0;
  if (offset >= stream.size) return Outcome::Done;
  size = AtMost(size, stream.size - offset);
  auto& entry = static_cast<ReadEntry&>(stream);
  if (entry.found == nullptr) entry.found = std::make_unique<FoundChain>(entry.start);
  const bool isMini = stream.size < source_.Header().miniCutoff;
  auto* to = static_cast<std::byte*>(data);
  while (*done < size) {
    Extent extent;
    Outcome outcome = isMini ? LocateMini(*entry.found, offset + *done, size - *done, &extent)
                             : Locate(*entry.found, offset + *done, size - *done, &extent);
    if (outcome != Outcome::Done) return outcome;
    // Of a file that was cut, what is left can be had.
    const std::uint64_t left = source_.BytesFrom(extent.offset);
    if (left == 0) return Outcome::Corrupt;
    const auto part = static_cast<std::size_t>(std::min(extent.size, left));
    outcome = source_.Read(extent.offset, to + *done, part);
    if (outcome != Outcome::Done) return outcome;
    *done += part;
  }
  return Outcome::Done;
}
