#pragma once

#include <cstdint>

#include "compound/found_chain.h"
#include "compound/sector_source.h"

/// The chain of the DIFAT's own sectors: each ends with the number of the next.
class DifatLinks final : public SectorLinks {
 public:
  explicit DifatLinks(SectorSource& source) : source_(source) {}
  Outcome After(std::uint32_t sector, std::uint32_t most, SectorRun* run) override;

 private:
  SectorSource& source_;
};

/// A table of words, one for each sector of some space, that is kept in sectors of the file.
class LinkTable : public SectorLinks {
 public:
  Outcome After(std::uint32_t sector, std::uint32_t most, SectorRun* run) override;

 protected:
  explicit LinkTable(SectorSource& source) : source_(source) {}

  /// The sector of the file that holds part `index` of the table.
  virtual Outcome PlaceOf(std::uint32_t index, std::uint32_t* sector) = 0;

  /// How many sectors there can be.
  virtual std::uint32_t Count() const = 0;

  std::uint32_t WordsPerSector() const { return source_.SectorSize() / 4; }

  SectorSource& source_;
};

/// The FAT: what comes after each sector of the file.
class Fat final : public LinkTable {
 public:
  explicit Fat(SectorSource& source);

 private:
  Outcome PlaceOf(std::uint32_t index, std::uint32_t* sector) override;
  std::uint32_t Count() const override { return source_.SectorCount(); }

  DifatLinks difatLinks_;
  FoundChain difat_;
};

/// The mini FAT: what comes after each sector of the mini stream.
class MiniFat final : public LinkTable {
 public:
  MiniFat(SectorSource& source, Fat& fat);

 private:
  Outcome PlaceOf(std::uint32_t index, std::uint32_t* sector) override;
  std::uint32_t Count() const override { return MaxRegularSector; }

  Fat& fat_;
  FoundChain places_;
};
