#include "tools/compound_check/storage_tree.h"

#include <algorithm>
#include <bit>

#include "tools/compound_check/compound_names.h"

namespace compound {

namespace {

constexpr std::size_t MaxLevel = 64;  // deeper than any balanced tree; bounds the walk's calls

class StorageTree {
 public:
  StorageTree(std::vector<RawEntry>& directory, std::size_t holder, Complaints& target)
      : entries(directory), storage(holder), complaints(target) {}

  std::vector<std::size_t> Check() {
    const std::uint32_t top = entries[storage].child;
    if (top < entries.size()) {
      complaints.Expect("color of the top", Label(storage), Black, entries[top].color);
    }
    Walk(top, 1);
    const std::size_t limit = 2 * static_cast<std::size_t>(std::bit_width(members.size()));
    complaints.Require(depth <= limit, "depth of its tree", Label(storage), depth);
    CheckOrder();
    return members;
  }

 private:
  std::string Label(std::size_t index) const { return EntryLabel(index, entries[index]); }

  /// Collects the members in order; returns the number of black entries on each way down.
  std::size_t Walk(std::uint32_t index, std::size_t level) {
    if (index == NoEntry || !CanEnter(index, level)) return 1;
    RawEntry& raw = entries[index];
    raw.reached = true;
    depth = std::max(depth, level);
    CheckColors(raw);
    const std::size_t left = Walk(raw.left, level + 1);
    members.push_back(index);
    const std::size_t right = Walk(raw.right, level + 1);
    complaints.Expect("black height, left and right", Label(index), left, right);
    return left + (raw.color == Black ? 1 : 0);
  }

  bool CanEnter(std::uint32_t index, std::size_t level) {
    if (!complaints.Require(index < entries.size(), "link to an entry", Label(storage), index)) {
      return false;
    }
    const RawEntry& raw = entries[index];
    const std::string label = Label(index);
    if (!complaints.Require(!raw.reached, "reached a second time from", label, storage)) {
      return false;
    }
    complaints.Require(raw.type != Unused, "linked although unused", label, 0);
    return complaints.Require(level <= MaxLevel, "level in its tree", label, level);
  }

  void CheckColors(const RawEntry& raw) {
    for (const std::uint32_t link : {raw.left, raw.right}) {
      if (raw.color == Red && link < entries.size()) {
        complaints.Expect("color below red", Label(link), Black, entries[link].color);
      }
    }
  }

  void CheckOrder() {
    for (std::size_t i = 1; i < members.size(); ++i) {
      const RawEntry& before = entries[members[i - 1]];
      if (CompareNames(before.name, entries[members[i]].name) >= 0) {
        complaints.Add(Label(members[i]), "order: expected before", Label(members[i - 1]));
      }
    }
  }

  std::vector<RawEntry>& entries;
  const std::size_t storage;
  Complaints& complaints;
  std::vector<std::size_t> members;
  std::size_t depth = 0;
};

}  // namespace

std::vector<std::size_t> CheckTree(std::vector<RawEntry>& entries, std::size_t storage,
                                   Complaints& complaints) {
  return StorageTree(entries, storage, complaints).Check();
}

}  // namespace compound
