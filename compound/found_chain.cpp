#include "compound/found_chain.h"

#include <algorithm>

bool SectorSet::Add(std::uint32_t sector) {
  std::uint64_t& word = parts_[sector / 1024][sector / 64 % 16];
  const std::uint64_t bit = std::uint64_t{1} << (sector % 64);
  if ((word & bit) != 0) return false;
  word |= bit;
  return true;
}

std::uint32_t FoundChain::EndOf(std::size_t run) const {
  return run + 1 < runs_.size() ? runs_[run + 1].index : count_;
}

std::size_t FoundChain::RunOf(std::uint32_t index) const {
  if (runs_[recent_].index <= index && index < EndOf(recent_)) return recent_;
  const auto after =
      std::upper_bound(runs_.begin(), runs_.end(), index,
                       [](std::uint32_t i, const Run& run) { return i < run.index; });
  return static_cast<std::size_t>(after - runs_.begin()) - 1;
}

/// The sectors that are known, as a set.
std::unique_ptr<SectorSet> FoundChain::Seen() const {
  auto seen = std::make_unique<SectorSet>();
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    const std::uint32_t size = EndOf(i) - runs_[i].index;
    for (std::uint32_t n = 0; n < size; ++n) seen->Add(runs_[i].start + n);
  }
  return seen;
}

/// Takes sectors into the chain; false when one of them is in it already.
bool FoundChain::Enter(SectorRun run) {
  // Taken out until all is well, as it may then hold sectors that the chain has not.
  std::unique_ptr<SectorSet> seen = std::move(seen_);
  // A chain that has only gone forwards cannot have come back.
  if (seen == nullptr && run.start < beyond_) seen = Seen();
  if (seen != nullptr) {
    for (std::uint32_t n = 0; n < run.count; ++n) {
      if (!seen->Add(run.start + n)) return false;
    }
  }
  if (count_ == 0 || run.start != last_ + 1) runs_.push_back({count_, run.start});
  seen_ = std::move(seen);
  count_ += run.count;
  last_ = run.start + (run.count - 1);
  beyond_ = std::max(beyond_, std::uint64_t{last_} + 1);
  return true;
}

Outcome FoundChain::Follow(SectorLinks& links, std::uint32_t most) {
  SectorRun run = {start_, 1};
  const Outcome outcome = count_ == 0 ? Outcome::Done : links.After(last_, most, &run);
  if (outcome != Outcome::Done) return outcome;
  return Enter(run) ? Outcome::Done : Outcome::Corrupt;
}

Outcome FoundChain::Find(SectorLinks& links, std::uint32_t index, std::uint32_t most,
                         SectorRun* run) {
  while (count_ <= index) {
    const Outcome outcome = Follow(links, index - count_ + 1);
    if (outcome != Outcome::Done) return outcome;
  }
  recent_ = RunOf(index);
  const std::uint32_t within = index - runs_[recent_].index;
  // What lies beyond a fault is told when it is asked for itself.
  while (recent_ + 1 == runs_.size() && count_ - index < most) {
    if (Follow(links, most - (count_ - index)) != Outcome::Done) break;
  }
  *run = {runs_[recent_].start + within, std::min(EndOf(recent_) - index, most)};
  return Outcome::Done;
}
