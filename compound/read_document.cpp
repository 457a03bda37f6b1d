#include "compound/read_document.h"

#include <algorithm>
#include <limits>

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

HRESULT ReadDocument::Open(const char* path, bool exclusive) {
  HRESULT result = source_.Open(path, exclusive);
  if (FAILED(result)) return result;
  chains_ = std::make_unique<Chains>(source_);
  result = directory_.Read(source_, chains_->fat);
  // The size of the mini stream is not looked at, only its chain: a library has told it too small.
  miniStream_ = std::make_unique<FoundChain>(directory_.Root()->start);
  return result;
}

HRESULT ReadDocument::Locate(FoundChain& chain, std::uint64_t offset, std::uint64_t most,
                             Extent* extent) {
  const unsigned shift = source_.SectorShift();
  const std::uint64_t index = offset >> shift;
  if (index >= source_.SectorCount()) return STG_E_DOCFILECORRUPT;
  SectorRun run;
  const HRESULT result = chain.Find(chains_->fat, static_cast<std::uint32_t>(index),
                                    SectorsOf(offset, most, shift), &run);
  if (FAILED(result)) return result;
  const std::uint64_t within = offset & (source_.SectorSize() - 1);
  extent->offset = source_.OffsetOf(run.start) + within;
  extent->size = std::min(most, (std::uint64_t{run.count} << shift) - within);
  return S_OK;
}

HRESULT ReadDocument::LocateMini(FoundChain& chain, std::uint64_t offset, std::uint64_t most,
                                 Extent* extent) {
  SectorRun run;
  const HRESULT result =
      chain.Find(chains_->miniFat, static_cast<std::uint32_t>(offset >> MiniSectorShift),
                 SectorsOf(offset, most, MiniSectorShift), &run);
  if (FAILED(result)) return result;
  const std::uint64_t within = offset & (MiniSectorSize - 1);
  const std::uint64_t size = (std::uint64_t{run.count} << MiniSectorShift) - within;
  return Locate(*miniStream_, (std::uint64_t{run.start} << MiniSectorShift) + within,
                std::min(most, size), extent);
}

HRESULT ReadDocument::Read(CompoundEntry& stream, std::uint64_t offset, void* data,
                           std::size_t size, std::size_t* done) {
  *done = 0;
  if (offset >= stream.size) return S_OK;
  size = std::min<std::uint64_t>(size, stream.size - offset);
  auto& entry = static_cast<ReadEntry&>(stream);
  if (entry.found == nullptr) entry.found = std::make_unique<FoundChain>(entry.start);
  const bool isMini = stream.size < source_.Header().miniCutoff;
  auto* to = static_cast<std::byte*>(data);
  while (*done < size) {
    Extent extent;
    HRESULT result = isMini ? LocateMini(*entry.found, offset + *done, size - *done, &extent)
                            : Locate(*entry.found, offset + *done, size - *done, &extent);
    if (SUCCEEDED(result)) result = source_.Read(extent.offset, to + *done, extent.size);
    if (FAILED(result)) return result;
    *done += extent.size;
  }
  return S_OK;
}
