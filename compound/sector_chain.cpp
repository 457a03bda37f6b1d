#include "compound/sector_chain.h"

#include <algorithm>

SectorRun SectorChain::From(std::uint32_t index) const {
  if (more_ == nullptr) return {first_.start + index, first_.count - index};
  // Writers mostly look at the end of a chain.
  const SectorRun& last = more_->back();
  const std::uint32_t before = total_ - last.count;
  if (index >= before) return {last.start + (index - before), total_ - index};
  for (const SectorRun& run : *more_) {
    if (index < run.count) return {run.start + index, run.count - index};
    index -= run.count;
  }
  return {};
}

void SectorChain::Append(SectorRun run) {
  if (run.count == 0) return;
  SectorRun& last = more_ != nullptr ? more_->back() : first_;
  if (total_ == 0) {
    first_ = run;
  } else if (last.start + last.count == run.start) {
    last.count += run.count;
  } else if (more_ != nullptr) {
    more_->push_back(run);
  } else {
    more_ = std::make_unique<std::vector<SectorRun>>(std::vector<SectorRun>{first_, run});
  }
  total_ += run.count;
}

SectorRun SectorChain::TakeLast(std::uint32_t count) {
  SectorRun& last = more_ != nullptr ? more_->back() : first_;
  count = std::min(count, last.count);
  last.count -= count;
  total_ -= count;
  const SectorRun taken = {last.start + last.count, count};
  if (last.count == 0 && more_ != nullptr) {
    more_->pop_back();
    if (more_->empty()) more_.reset();
  }
  if (total_ == 0) first_ = {};
  return taken;
}
