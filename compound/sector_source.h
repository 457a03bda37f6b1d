#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "compound/disk.h"
#include "compound/format.h"
#include "compound/outcome.h"

/// A compound file that is read: its header and its bytes.
class SectorSource {
 public:
  /// Opens the file and checks its header. While it is open nobody can write it, and with
  /// `exclusive` nobody can read it either; a file that is open otherwise is InUse.
  Outcome Open(const char* path, bool exclusive);

  /// Whether the file, which must be a plain one, begins as a compound file does.
  static Outcome LooksCompound(const char* path, bool* looks);

  const CompoundHeader& Header() const { return header_; }
  std::uint32_t SectorSize() const { return 1U << header_.sectorShift; }
  unsigned SectorShift() const { return header_.sectorShift; }

  /// Sectors that the file has, with the last one even when the file ends within it.
  std::uint32_t SectorCount() const { return sectorCount_; }

  std::uint64_t OffsetOf(std::uint32_t sector) const {
    return (std::uint64_t{sector} + 1) << header_.sectorShift;
  }

  /// How many bytes the file has from there on.
  std::uint64_t BytesFrom(std::uint64_t offset) const {
    return offset < size_ ? size_ - offset : 0;
  }

  /// Reads bytes of the file; Corrupt when it ends before the last of them.
  Outcome Read(std::uint64_t offset, void* data, std::size_t size);

  /// The bytes of a sector of some table. They are good until the next call. Where the file ends
  /// within the sector, bytes FF stand for the rest: free sectors and no entries.
  Outcome Look(std::uint32_t sector, const std::byte** bytes);

  void Close();

 private:
  // A sector of either size lies within one block.
  static constexpr std::size_t BlockSize = 4096;
  static constexpr std::size_t BlockCount = 16;
  static constexpr std::uint64_t NoBlock = ~std::uint64_t{0};

  Outcome CheckHeader() const;
  Outcome ReadFile(std::uint64_t offset, void* data, std::size_t size);
  Outcome BlockAt(std::uint64_t offset, const std::byte** block);

  OpenFile file_;
  std::uint64_t size_ = 0;  // bytes of the file
  std::uint32_t sectorCount_ = 0;
  CompoundHeader header_ = {};
  std::unique_ptr<std::byte[]> blocks_;  // what small reads have read lately
  std::uint64_t held_[BlockCount] = {};  // which block each place holds
};
