#pragma once

#include <cstdint>
#include <map>

#include "compound/sector_chain.h"

/// A piece of the file, in bytes.
struct Extent {
  std::uint64_t offset;
  std::uint64_t size;
};

/// Sectors of one size: which of them are in use, and where in the file they lie. The file itself
/// is such a space, and the mini stream is one within it. In use are all sectors below End() but
/// the free runs and the locked sector.
class SectorSpace {
 public:
  /// The sectors of the file, of `sectorSize` bytes; number 0 lies behind the header's sector.
  /// Sector number `locked` is never taken.
  SectorSpace(std::uint32_t sectorSize, std::uint32_t locked)
      : sectorSize_(sectorSize), locked_(locked) {}

  /// Sectors of `sectorSize` bytes that lie in `chain` of the space `host`; both outlive this one.
  SectorSpace(std::uint32_t sectorSize, const SectorSpace& host, const SectorChain& chain);

  SectorSpace(const SectorSpace&) = delete;
  SectorSpace& operator=(const SectorSpace&) = delete;

  /// Bytes.
  std::uint32_t SectorSize() const { return sectorSize_; }

  /// Sectors that hold so many bytes.
  std::uint32_t SectorsFor(std::uint64_t bytes) const {
    return static_cast<std::uint32_t>((bytes + sectorSize_ - 1) / sectorSize_);
  }

  /// The number of the first sector behind all that are in use.
  std::uint32_t End() const { return end_; }

  /// What End() will be after taking `count` sectors.
  std::uint64_t EndAfter(std::uint32_t count) const;

  /// Lengthens a chain to `count` sectors, with free ones while there are any. May throw
  /// std::bad_alloc; then the chain is as it was.
  void Extend(SectorChain& chain, std::uint32_t count);

  /// Shortens a chain to `count` sectors. Never fails.
  void Trim(SectorChain& chain, std::uint32_t count);

  /// The bytes from byte `offset` of a chain on that lie in one piece.
  Extent Locate(const SectorChain& chain, std::uint64_t offset) const;

 private:
  SectorRun Take(std::uint32_t count);
  void Give(SectorRun run);
  void ShrinkEnd();

  const std::uint32_t sectorSize_;
  const std::uint32_t locked_;
  const SectorSpace* const host_ = nullptr;
  const SectorChain* const hostChain_ = nullptr;
  std::uint32_t end_ = 0;
  std::uint32_t freeCount_ = 0;
  std::map<std::uint32_t, std::uint32_t> freeRuns_;  // start, count; never touching each other
};
