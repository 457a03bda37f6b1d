#pragma once

#include <cstdint>
#include <memory>
#include <vector>

/// `count` neighbouring sectors from sector number `start` on.
struct SectorRun {
  std::uint32_t start = 0;
  std::uint32_t count = 0;
};

/// The sectors of one stream in their order, kept as runs. A chain in one piece, which is nearly
/// every chain, takes no memory of its own; further runs do.
class SectorChain {
 public:
  std::uint32_t RunCount() const {
    if (more_ != nullptr) return static_cast<std::uint32_t>(more_->size());
    return first_.count != 0 ? 1 : 0;
  }
  const SectorRun& Run(std::uint32_t i) const { return more_ != nullptr ? (*more_)[i] : first_; }

  /// Sectors in all runs.
  std::uint32_t Count() const { return total_; }

  /// The number of the first sector. The chain is not empty.
  std::uint32_t Start() const { return Run(0).start; }

  /// The run that sector number `index` of the chain begins, cut to what lies from there on.
  SectorRun From(std::uint32_t index) const;

  /// Appends a run, joining it to the last one where they touch. May throw std::bad_alloc; then
  /// the chain is unchanged.
  void Append(SectorRun run);

  /// Takes the last run, or the last `count` sectors of it, off the chain. Never fails.
  SectorRun TakeLast(std::uint32_t count);

 private:
  SectorRun first_;
  std::uint32_t total_ = 0;
  std::unique_ptr<std::vector<SectorRun>> more_;  // all the runs, when there are several
};
