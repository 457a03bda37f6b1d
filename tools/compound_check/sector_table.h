#pragma once

/// A table of sectors, FAT or mini FAT: what follows each sector, and whose it is.

#include <cstddef>
#include <cstdint>
#include <optional>
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

/// A number of a sector, and where in the file it stands.
struct SectorLink {
  std::uint32_t sector;
  std::optional<std::uint64_t> place = {};
};

class SectorTable {
 public:
  /// `table` and `kind` are what complaints call it and its sectors.
  SectorTable(std::string table, std::string kind, Complaints& target)
      : tableName_(std::move(table)), kindName_(std::move(kind)), complaints_(target) {}

  /// The table continues with these words, which stand at `place` in the file.
  void Append(const std::vector<std::uint32_t>& words, std::uint64_t place);
  std::size_t Words() const { return next_.size(); }
  std::uint32_t Word(std::uint32_t sector) const { return next_[sector]; }

  /// Sets the number of sectors that exist and for which there is a word in the end. None has an
  /// owner yet; the table may be longer.
  void SetCount(std::uint64_t sectors);
  std::size_t Count() const { return owner_.size(); }

  /// Enters an owner's name; the result stands for it.
  std::uint32_t NewOwner(const std::string& name);

  /// Gives a sector to an owner; when there is no such sector or it has one already, complains,
  /// marks all who are concerned as damaged and returns false.
  bool Own(SectorLink link, std::uint32_t who);
  bool IsOwned(std::uint32_t sector) const { return owner_[sector] != 0; }

  /// Walks a chain and owns its sectors; a crossing or a loop meets an owned sector and ends it.
  /// `needed` sectors are expected if that is known.
  std::vector<std::uint32_t> Chain(SectorLink start, std::uint32_t who,
                                   std::optional<std::uint64_t> needed = {});

  /// Complains of an owner whose bytes cannot be trusted.
  void Damage(std::uint32_t who, const std::string& what, const Evidence& evidence = {});
  bool IsDamaged(std::uint32_t who) const { return owners_[who].damaged; }

  /// Complains of sectors that are taken but belong to nobody or are not there.
  void CheckLeaks() const;

 private:
  struct Owner {
    std::string name;
    bool damaged = false;
  };
  struct Part {  // of the table
    std::size_t first;
    std::uint64_t place;
  };

  std::uint64_t PlaceOf(std::size_t word) const;

  const std::string tableName_, kindName_;
  Complaints& complaints_;
  std::vector<std::uint32_t> next_;
  std::vector<Part> parts_;
  std::vector<Owner> owners_{{"nobody"}};
  std::vector<std::uint32_t> owner_;  // of each sector, an index into owners_
};

}  // namespace compound
