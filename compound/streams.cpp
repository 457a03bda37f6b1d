#include "compound/streams.h"

#include <algorithm>
#include <new>
#include <vector>

CompoundStreams::CompoundStreams(const CompoundParameters& parameters,
                                 const CompoundDirectory& directory, GatheringFile& file)
    : parameters_(parameters),
      directory_(directory),
      file_(file),
      tableSpace_(parameters, file),
      space_(parameters.sectorSize, LockedSector(parameters)),
      miniSpace_(MiniSectorSize, space_, miniStream_) {}

Outcome CompoundStreams::SecureEntries(std::uint64_t entries) {
  return tableSpace_.Secure({space_.End(), entries, miniSpace_.End()});
}

Outcome CompoundStreams::Read(const CompoundEntry& stream, std::uint64_t offset, void* data,
                              std::size_t size, std::size_t* done) {
  *done = 0;
  if (offset >= stream.size) return Outcome::Done;
  size = AtMost(size, stream.size - offset);
  const Outcome outcome = ReadChain(HomeOf(stream.size), stream.chain, offset, data, size);
  if (outcome == Outcome::Done) *done = size;
  return outcome;
}

Outcome CompoundStreams::Write(CompoundEntry& stream, std::uint64_t offset, const void* data,
                               std::size_t size, std::size_t* done) {
  *done = 0;
  if (size == 0) return Outcome::Done;
  const std::uint64_t before = stream.size;
  Outcome grown = Outcome::Done;
  if (offset + size > before) {
    grown = GrowTo(stream, offset + size, offset);
    if (grown == Outcome::NoSpace) GrowByHalves(stream, offset, size);
    size = stream.size > offset ? AtMost(size, stream.size - offset) : 0;
  }
  const Outcome outcome = WriteChain(HomeOf(stream.size), stream.chain, offset, data, size, done);
  if (outcome == Outcome::Done) return grown;
  const std::uint64_t kept = *done > 0 ? std::max(before, offset + *done) : before;
  try {
    // Nothing can be done about bytes that stay behind the last good one.
    static_cast<void>(ShrinkTo(stream, kept));
  } catch (const std::bad_alloc&) {
    // They stay for this reason, too; what is told is why the write failed.
  }
  return outcome;
}

/// Less may fit than was asked for: halving finds how much. What fitted stays when memory ends.
void CompoundStreams::GrowByHalves(CompoundEntry& stream, std::uint64_t offset, std::size_t size) {
  const std::uint64_t base = std::max(stream.size, offset);
  try {
    for (std::uint64_t step = (offset + size - base) / 2; step > 0; step /= 2) {
      if (GrowTo(stream, std::max(stream.size, base) + step, offset) == Outcome::NoMemory) return;
    }
  } catch (const std::bad_alloc&) {
    return;
  }
}

Outcome CompoundStreams::Resize(CompoundEntry& stream, std::uint64_t size) {
  return size < stream.size ? ShrinkTo(stream, size) : GrowTo(stream, size, size);
}

void CompoundStreams::Clear(CompoundEntry& stream) { HomeOf(stream.size).Trim(stream.chain, 0); }

Outcome CompoundStreams::GrowTo(CompoundEntry& stream, std::uint64_t size, std::uint64_t zeroUpTo) {
  const std::uint64_t before = stream.size;
  if (size <= before) return Outcome::Done;
  if (size / parameters_.sectorSize >= LargestFile(parameters_)) return Outcome::NoSpace;
  zeroUpTo = std::min(zeroUpTo, size);
  SectorSpace& home = HomeOf(size);
  if (&HomeOf(before) != &home && before > 0) return ChangeHome(stream, size, before, zeroUpTo);
  Outcome outcome = Extend(home, stream.chain, home.SectorsFor(size));
  if (outcome == Outcome::Done) outcome = ZeroChain(home, stream.chain, before, zeroUpTo);
  if (outcome == Outcome::Done) {
    stream.size = size;
  } else {
    home.Trim(stream.chain, home.SectorsFor(before));
  }
  return outcome;
}

Outcome CompoundStreams::ShrinkTo(CompoundEntry& stream, std::uint64_t size) {
  if (size >= stream.size) return Outcome::Done;
  SectorSpace& home = HomeOf(size);
  if (&HomeOf(stream.size) != &home) return ChangeHome(stream, size, size, size);
  home.Trim(stream.chain, home.SectorsFor(size));
  stream.size = size;
  return Outcome::Done;
}

/// Moves the first `keep` bytes to where a stream of `size` bytes lies, with zeros behind them as
/// far as `zeroUpTo`. On failure all is as it was.
Outcome CompoundStreams::ChangeHome(CompoundEntry& stream, std::uint64_t size, std::uint64_t keep,
                                    std::uint64_t zeroUpTo) {
  SectorSpace& from = HomeOf(stream.size);
  SectorSpace& to = HomeOf(size);
  std::vector<std::byte> bytes(static_cast<std::size_t>(keep));
  SectorChain chain;
  std::size_t done = 0;
  Outcome outcome = ReadChain(from, stream.chain, 0, bytes.data(), bytes.size());
  if (outcome == Outcome::Done) outcome = Extend(to, chain, to.SectorsFor(size));
  if (outcome == Outcome::Done) {
    outcome = WriteChain(to, chain, 0, bytes.data(), bytes.size(), &done);
  }
  if (outcome == Outcome::Done) outcome = ZeroChain(to, chain, keep, zeroUpTo);
  if (outcome != Outcome::Done) {
    to.Trim(chain, 0);
    return outcome;
  }
  from.Trim(stream.chain, 0);
  stream.chain = std::move(chain);
  stream.size = size;
  return Outcome::Done;
}

/// Lengthens a chain to `count` sectors of `space`; on failure it is as before.
Outcome CompoundStreams::Extend(SectorSpace& space, SectorChain& chain, std::uint32_t count) {
  if (count <= chain.Count()) return Outcome::Done;
  const std::uint64_t end = space.EndAfter(count - chain.Count());
  const Outcome outcome = &space == &miniSpace_
                              ? ExtendMiniStream(end)
                              : tableSpace_.Secure({end, directory_.Count(), miniSpace_.End()});
  if (outcome == Outcome::Done) space.Extend(chain, count);
  return outcome;
}

/// Gives the mini stream sectors for `miniEnd` mini sectors; a few more while it is large, so that
/// it stays in few pieces.
Outcome CompoundStreams::ExtendMiniStream(std::uint64_t miniEnd) {
  const std::uint64_t entries = directory_.Count();
  const std::uint32_t needed = space_.SectorsFor(miniEnd * MiniSectorSize);
  Outcome outcome = tableSpace_.Secure({space_.End(), entries, miniEnd});
  if (outcome != Outcome::Done || needed <= miniStream_.Count()) return outcome;
  const std::uint32_t ahead = std::min<std::uint32_t>(needed / 8, 63);
  for (const std::uint32_t count : {needed + ahead, needed}) {
    const std::uint64_t end = space_.EndAfter(count - miniStream_.Count());
    outcome = tableSpace_.Secure({end, entries, miniEnd});
    if (outcome != Outcome::Done) continue;
    space_.Extend(miniStream_, count);
    return outcome;
  }
  return outcome;
}

void CompoundStreams::TrimMiniStream() {
  const std::uint64_t bytes = std::uint64_t{miniSpace_.End()} * MiniSectorSize;
  space_.Trim(miniStream_, space_.SectorsFor(bytes));
}

Outcome CompoundStreams::ReadChain(const SectorSpace& space, const SectorChain& chain,
                                   std::uint64_t offset, void* data, std::size_t size) {
  auto* to = static_cast<std::byte*>(data);
  while (size > 0) {
    const Extent extent = space.Locate(chain, offset);
    const std::size_t part = AtMost(size, extent.size);
    const Outcome outcome = file_.Read(extent.offset, to, part);
    if (outcome != Outcome::Done) return outcome;
    to += part;
    offset += part;
    size -= part;
  }
  return Outcome::Done;
}

Outcome CompoundStreams::WriteChain(const SectorSpace& space, const SectorChain& chain,
                                    std::uint64_t offset, const void* data, std::size_t size,
                                    std::size_t* done) {
  auto* from = static_cast<const std::byte*>(data);
  for (*done = 0; *done < size;) {
    const Extent extent = space.Locate(chain, offset + *done);
    const std::size_t part = AtMost(size - *done, extent.size);
    const Outcome outcome = file_.Write(extent.offset, from + *done, part);
    if (outcome != Outcome::Done) return outcome;
    *done += part;
  }
  return Outcome::Done;
}

Outcome CompoundStreams::ZeroChain(const SectorSpace& space, const SectorChain& chain,
                                   std::uint64_t from, std::uint64_t to) {
  while (from < to) {
    const Extent extent = space.Locate(chain, from);
    const std::uint64_t part = std::min(to - from, extent.size);
    const Outcome outcome = file_.WriteZeros(extent.offset, part);
    if (outcome != Outcome::Done) return outcome;
    from += part;
  }
  return Outcome::Done;
}
