#pragma once

/// A table of sectors, FAT or mini FAT: what follows each sector, and whose it is.

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/compound_check/complaints.h"

namespace compound {

enum SectorWord : std::uint32_t {
  MaxSector = 0xFFFFFFFA,
  DifatSector = 0xFFFFFFFC,
  FatSector = 0xFFFFFFFD,
  EndOfChain = 0xFFFFFFFE,
  FreeSector = 0xFFFFFFFF,
};

class SectorTable {
 public:
  /// A `kind` is what its sectors are called in complaints.
  SectorTable(std::string kind, Complaints& target)
      : kindName(std::move(kind)), complaints(target) {}

  /// Sets the number of sectors that exist. None has an owner yet; the table may be longer.
  void SetCount(std::uint64_t sectors);
  std::size_t Count() const { return owner.size(); }

  /// Enters an owner's name; the result stands for it in Own.
  std::uint32_t NewOwner(const std::string& name);

  /// Gives a sector to an owner; false when there is no such sector or it has one already.
  bool Own(std::uint32_t sector, std::uint32_t who);

  /// Walks a chain and owns its sectors; a crossing or a loop meets an owned sector and ends it.
  std::vector<std::uint32_t> Chain(std::uint32_t start, const std::string& name);

  /// Complains of each sector that is taken but belongs to nobody.
  void CheckLeaks() const;

  std::vector<std::uint32_t> next;

 private:
  const std::string kindName;
  Complaints& complaints;
  std::vector<std::string> names{"nobody"};
  std::vector<std::uint32_t> owner;  // index into names
};

}  // namespace compound
