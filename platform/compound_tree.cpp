#include "platform/compound_tree.h"

#include <algorithm>
#include <cstddef>

#include "platform/compound_directory.h"
#include "platform/compound_uppercase.h"

namespace {

/// An entry with the part of its name that decides nearly every comparison.
struct SortItem {
  std::uint64_t key;
  CompoundEntry* entry;
};

bool IsBefore(const SortItem& a, const SortItem& b) {
  if (a.key != b.key) return a.key < b.key;
  const CompoundName& x = a.entry->name;
  const CompoundName& y = b.entry->name;
  return CompareNames(x.units, x.length, y.units, y.length) < 0;
}

/// The four upper-cased units of a name from `start` on; missing ones count as zero.
std::uint64_t FourUnits(const CompoundName& name, std::size_t start) {
  std::uint64_t key = 0;
  for (std::size_t i = start; i < start + 4; ++i) {
    key = key << 16 | (i < name.length ? Uppercase(name.units[i]) : 0U);
  }
  return key;
}

std::size_t CommonPrefix(const CompoundName& a, const CompoundName& b, std::size_t limit) {
  std::size_t i = 0;
  while (i < limit &&
         (a.units[i] == b.units[i] || Uppercase(a.units[i]) == Uppercase(b.units[i]))) {
    ++i;
  }
  return i;
}

/// Sorts names of one length by the four units behind what they all have in common.
void SortSameLength(SortItem* begin, SortItem* end) {
  const CompoundName& first = begin->entry->name;
  std::size_t common = first.length;
  for (SortItem* item = begin + 1; item < end; ++item) {
    common = CommonPrefix(first, item->entry->name, common);
  }
  for (SortItem* item = begin; item < end; ++item) item->key = FourUnits(item->entry->name, common);
  if (!std::is_sorted(begin, end, IsBefore)) std::sort(begin, end, IsBefore);
}

}  // namespace

std::vector<CompoundEntry*> SortedChildren(const CompoundEntry& storage) {
  const StorageInfo& info = *storage.storage;
  std::size_t starts[MaxNameUnits + 2] = {};
  for (const CompoundEntry* e = info.firstChild; e != nullptr; e = e->next) {
    ++starts[e->name.length + 1];
  }
  for (std::size_t length = 1; length < MaxNameUnits + 2; ++length) {
    starts[length] += starts[length - 1];
  }
  std::vector<SortItem> items(info.childCount);
  std::size_t ends[MaxNameUnits + 1];
  std::copy_n(starts, MaxNameUnits + 1, ends);
  for (CompoundEntry* e = info.firstChild; e != nullptr; e = e->next) {
    items[ends[e->name.length]++] = {0, e};
  }
  for (std::size_t length = 1; length <= MaxNameUnits; ++length) {
    if (starts[length] < ends[length]) {
      SortSameLength(items.data() + starts[length], items.data() + ends[length]);
    }
  }
  std::vector<CompoundEntry*> sorted(items.size());
  std::transform(items.begin(), items.end(), sorted.begin(),
                 [](const SortItem& item) { return item.entry; });
  return sorted;
}
