// The bytes of streams: where they lie, and how streams grow and shrink.
#include <algorithm>
#include <new>
#include <vector>

#include "compound/document.h"

namespace {

std::uint32_t Divide(std::uint64_t size, std::uint64_t unit) {
  return static_cast<std::uint32_t>((size + unit - 1) / unit);
}

}  // namespace

std::uint32_t CompoundDocument::UnitsFor(std::uint64_t size) const {
  return Divide(size, IsMini(size) ? MiniSectorSize : parameters_.sectorSize);
}

HRESULT CompoundDocument::Read(CompoundEntry& stream, std::uint64_t offset, void* data,
                               std::size_t size, std::size_t* done) {
  *done = 0;
  if (offset >= stream.size) return S_OK;
  size = std::min<std::uint64_t>(size, stream.size - offset);
  const HRESULT result = ReadChain(stream.chain, IsMini(stream.size), offset, data, size);
  if (SUCCEEDED(result)) *done = size;
  return result;
}

HRESULT CompoundDocument::Write(CompoundEntry& stream, std::uint64_t offset, const void* data,
                                std::size_t size, std::size_t* done) {
  *done = 0;
  if (size == 0) return S_OK;
  const std::uint64_t before = stream.size;
  HRESULT grown = S_OK;
  if (offset + size > before) {
    grown = GrowTo(stream, offset + size, offset);
    // Less may fit than was asked for: halving finds how much.
    const std::uint64_t base = std::max(before, offset);
    for (std::uint64_t step = (offset + size - base) / 2; grown == STG_E_MEDIUMFULL && step > 0;
         step /= 2) {
      if (GrowTo(stream, std::max(stream.size, base) + step, offset) == E_OUTOFMEMORY) break;
    }
    size = stream.size > offset ? std::min<std::uint64_t>(size, stream.size - offset) : 0;
  }
  const HRESULT result = WriteChain(stream.chain, IsMini(stream.size), offset, data, size, done);
  if (FAILED(result) && stream.size > before) {
    ShrinkTo(stream, std::max<std::uint64_t>(before, *done > 0 ? offset + *done : 0));
  }
  return FAILED(result) ? result : grown;
}

HRESULT CompoundDocument::Resize(CompoundEntry& stream, std::uint64_t size) {
  return size < stream.size ? ShrinkTo(stream, size) : GrowTo(stream, size, size);
}

HRESULT CompoundDocument::GrowTo(CompoundEntry& stream, std::uint64_t size,
                                 std::uint64_t zeroUpTo) {
  const std::uint64_t before = stream.size;
  if (size <= before) return S_OK;
  if (size / parameters_.sectorSize >= LargestFile(parameters_)) return STG_E_MEDIUMFULL;
  const bool mini = IsMini(size);
  HRESULT result = S_OK;
  if (IsMini(before) != mini && before > 0) {
    result = ChangeHome(stream, size, before);
  } else {
    result = Extend(stream.chain, mini, UnitsFor(size));
  }
  if (FAILED(result)) return result;
  stream.size = size;
  result = ZeroChain(stream.chain, mini, before, std::min(zeroUpTo, size));
  if (FAILED(result)) ShrinkTo(stream, before);
  return result;
}

HRESULT CompoundDocument::ShrinkTo(CompoundEntry& stream, std::uint64_t size) {
  if (size >= stream.size) return S_OK;
  if (IsMini(stream.size) != IsMini(size)) {
    const HRESULT result = ChangeHome(stream, size, size);
    if (FAILED(result)) return result;
  } else {
    Trim(stream.chain, IsMini(size), UnitsFor(size));
  }
  stream.size = size;
  return S_OK;
}

/// Moves the first `keep` bytes between the mini stream and sectors of their own.
HRESULT CompoundDocument::ChangeHome(CompoundEntry& stream, std::uint64_t size,
                                     std::uint64_t keep) {
  const bool mini = IsMini(size);
  std::vector<std::byte> bytes(keep);
  SectorChain chain;
  HRESULT result = ReadChain(stream.chain, !mini, 0, bytes.data(), bytes.size());
  if (SUCCEEDED(result)) result = Extend(chain, mini, UnitsFor(size));
  std::size_t done = 0;
  if (SUCCEEDED(result)) result = WriteChain(chain, mini, 0, bytes.data(), bytes.size(), &done);
  if (FAILED(result)) {
    Trim(chain, mini, 0);
    chain.Free();
    return result;
  }
  Trim(stream.chain, !mini, 0);
  stream.chain.Free();
  stream.chain = chain;
  stream.size = keep;
  return S_OK;
}

/// Lengthens a chain to `count` sectors; on failure it is as before.
HRESULT CompoundDocument::Extend(SectorChain& chain, bool mini, std::uint32_t count) {
  const std::uint32_t before = chain.Count();
  if (count <= before) return S_OK;
  SectorSpace& from = mini ? miniSpace_ : space_;
  const std::uint64_t end = from.EndAfter(count - before);
  const HRESULT result =
      mini ? ExtendMiniStream(end) : Secure(end, directory_.Count(), miniSpace_.End());
  if (FAILED(result)) return result;
  while (chain.Count() < count) {
    const SectorRun run = from.Take(count - chain.Count());
    try {
      chain.Append(run);
    } catch (const std::bad_alloc&) {
      from.Give(run);
      Trim(chain, mini, before);
      throw;
    }
  }
  return S_OK;
}

/// Gives the mini stream sectors for `miniEnd` mini sectors; a few more while it is large, so that
/// it stays in few pieces.
HRESULT CompoundDocument::ExtendMiniStream(std::uint64_t miniEnd) {
  const std::uint32_t needed = Divide(miniEnd * MiniSectorSize, parameters_.sectorSize);
  HRESULT result = Secure(space_.End(), directory_.Count(), miniEnd);
  if (FAILED(result) || needed <= miniStream_.Count()) return result;
  const std::uint32_t ahead = std::min<std::uint32_t>(needed / 8, 63);
  for (const std::uint32_t count : {needed + ahead, needed}) {
    result = Secure(space_.EndAfter(count - miniStream_.Count()), directory_.Count(), miniEnd);
    if (SUCCEEDED(result)) return Extend(miniStream_, false, count);
  }
  return result;
}

void CompoundDocument::Trim(SectorChain& chain, bool mini, std::uint32_t count) {
  while (chain.Count() > count) {
    (mini ? miniSpace_ : space_).Give(chain.TakeLast(chain.Count() - count));
  }
}

void CompoundDocument::TrimMiniStream() {
  const std::uint64_t bytes = std::uint64_t{miniSpace_.End()} * MiniSectorSize;
  Trim(miniStream_, false, Divide(bytes, parameters_.sectorSize));
}

CompoundDocument::Extent CompoundDocument::Locate(const SectorChain& chain, bool mini,
                                                  std::uint64_t offset) const {
  const std::uint32_t unit = mini ? MiniSectorSize : parameters_.sectorSize;
  const SectorRun run = chain.From(static_cast<std::uint32_t>(offset / unit));
  const std::uint64_t within = offset % unit;
  const std::uint64_t size = std::uint64_t{run.count} * unit - within;
  if (!mini) return {OffsetOf(run.start) + within, size};
  Extent extent = Locate(miniStream_, false, std::uint64_t{run.start} * unit + within);
  extent.size = std::min(extent.size, size);
  return extent;
}

HRESULT CompoundDocument::ReadChain(const SectorChain& chain, bool mini, std::uint64_t offset,
                                    void* data, std::size_t size) {
  auto* to = static_cast<std::byte*>(data);
  while (size > 0) {
    const Extent extent = Locate(chain, mini, offset);
    const std::size_t part = std::min<std::uint64_t>(size, extent.size);
    const HRESULT result = file_.Read(extent.offset, to, part);
    if (FAILED(result)) return result;
    to += part;
    offset += part;
    size -= part;
  }
  return S_OK;
}

HRESULT CompoundDocument::WriteChain(const SectorChain& chain, bool mini, std::uint64_t offset,
                                     const void* data, std::size_t size, std::size_t* done) {
  auto* from = static_cast<const std::byte*>(data);
  for (*done = 0; *done < size;) {
    const Extent extent = Locate(chain, mini, offset + *done);
    const std::size_t part = std::min<std::uint64_t>(size - *done, extent.size);
    const HRESULT result = file_.Write(extent.offset, from + *done, part);
    if (FAILED(result)) return result;
    *done += part;
  }
  return S_OK;
}

HRESULT CompoundDocument::ZeroChain(const SectorChain& chain, bool mini, std::uint64_t from,
                                    std::uint64_t to) {
  while (from < to) {
    const Extent extent = Locate(chain, mini, from);
    const std::uint64_t part = std::min(to - from, extent.size);
    const HRESULT result = file_.WriteZeros(extent.offset, part);
    if (FAILED(result)) return result;
    from += part;
  }
  return S_OK;
}
