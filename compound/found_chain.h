#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "compound/outcome.h"
#include "compound/sector_chain.h"

/// What comes after each sector in its chain.
class SectorLinks {
 public:
  virtual ~SectorLinks() = default;

  /// The sector after `sector`, and with it as many as come next and are neighbours, but at most
  /// `most`. Corrupt when none comes, or one that is not there.
  virtual Outcome After(std::uint32_t sector, std::uint32_t most, SectorRun* run) = 0;
};

/// A set of sectors that takes memory by where they lie, not by how many there could be.
class SectorSet {
 public:
  /// False when the sector was in it already. May throw std::bad_alloc.
  bool Add(std::uint32_t sector);

 private:
  std::unordered_map<std::uint32_t, std::array<std::uint64_t, 16>> parts_;
};

/// A chain of sectors as far as it has been followed, which is as far as it was asked for. Takes 8
/// bytes of memory for each run of neighbouring sectors, and a few bits for each sector of a chain
/// that goes backwards. No chain is followed into a loop.
class FoundChain {
 public:
  explicit FoundChain(std::uint32_t start) : start_(start) {}

  /// The sector at `index` of the chain, and with it the neighbours that come next, at most `most`
  /// in all. Corrupt when the chain has no such sector or comes back to itself before
  /// it. May throw std::bad_alloc.
  Outcome Find(SectorLinks& links, std::uint32_t index, std::uint32_t most, SectorRun* run);

 private:
  struct Run {
    std::uint32_t index;  // of its first sector in the chain
    std::uint32_t start;
  };

  std::uint32_t EndOf(std::size_t run) const;
  std::size_t RunOf(std::uint32_t index) const;
  Outcome Follow(SectorLinks& links, std::uint32_t most);
  bool Enter(SectorRun run);
  std::unique_ptr<SectorSet> Seen() const;

  std::uint32_t start_;
  std::uint32_t count_ = 0;   // sectors that are known
  std::uint32_t last_ = 0;    // the last of them
  std::uint64_t beyond_ = 0;  // all of them are below
  std::size_t recent_ = 0;    // the run that was asked for last
  std::vector<Run> runs_;
  std::unique_ptr<SectorSet> seen_;  // all of them, once the chain has gone backwards
};
