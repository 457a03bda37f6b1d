#pragma once

#include <cstdint>
#include <vector>

/// `count` neighbouring sectors from `start` on.
struct SectorRun {
  std::uint32_t start = 0;
  std::uint32_t count = 0;
};

/// The chain of sectors of one stream, kept as runs. A chain in one piece, which is nearly every
/// chain, takes no memory of its own; further runs do. Owns them: end it with Free.
class SectorChain {
 public:
  std::uint32_t RunCount() const {
    if (more_ != nullptr) return static_cast<std::uint32_t>(more_->size());
    return first_.count != 0 ? 1 : 0;
  }
  const SectorRun& Run(std::uint32_t i) const { return more_ != nullptr ? (*more_)[i] : first_; }
  std::uint32_t Count() const { return total_; }
  std::uint32_t Start() const { return Run(0).start; }

  /// The sector after the last one, where the chain would like to grow; 0 when it is empty.
  std::uint32_t End() const;

  /// The run that sector number `index` of the chain begins, cut to what lies from there on.
  SectorRun From(std::uint32_t index) const;

  /// Appends a run, joining it to the last one where they touch. May throw std::bad_alloc; then
  /// the chain is unchanged.
  void Append(SectorRun run);

  /// Takes the last run, or the last `count` sectors of it, off the chain. Never fails.
  SectorRun TakeLast(std::uint32_t count);

  void Free();

 private:
  SectorRun first_;
  std::uint32_t total_ = 0;
  std::vector<SectorRun>* more_ = nullptr;  // all the runs, when there are several
};
