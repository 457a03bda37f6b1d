#include "compound/sector_chain.h"

#include <algorithm>
#include <memory>

std::uint32_t SectorChain::End() const {
  if (total == 0) return 0;
  const SectorRun& last = Run(RunCount() - 1);
  return last.start + last.count;
}

SectorRun SectorChain::From(std::uint32_t index) const {
  if (more == nullptr) return {first.start + index, first.count - index};
  // Writers mostly look at the end of a chain.
  const SectorRun& last = more->back();
  const std::uint32_t before = total - last.count;
  if (index >= before) return {last.start + (index - before), total - index};
  for (const SectorRun& run : *more) {
    if (index < run.count) return {run.start + index, run.count - index};
    index -= run.count;
  }
  return {};
}

void SectorChain::Append(SectorRun run) {
  if (run.count == 0) return;
  if (total == 0) {
    first = run;
  } else if (End() == run.start) {
    (more != nullptr ? more->back() : first).count += run.count;
  } else if (more != nullptr) {
    more->push_back(run);
  } else {
    more = std::make_unique<std::vector<SectorRun>>(std::vector<SectorRun>{first, run}).release();
  }
  total += run.count;
}

SectorRun SectorChain::TakeLast(std::uint32_t count) {
  SectorRun& last = more != nullptr ? more->back() : first;
  count = std::min(count, last.count);
  last.count -= count;
  total -= count;
  const SectorRun taken = {last.start + last.count, count};
  if (last.count == 0 && more != nullptr) {
    more->pop_back();
    if (more->empty()) Free();
  }
  return taken;
}

void SectorChain::Free() {
  delete more;
  more = nullptr;
  first = {};
  total = 0;
}
