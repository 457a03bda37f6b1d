#include "tools/compound_check/storage_tree.h"

#include <algorithm>
#include <map>

#include "tools/compound_check/compound_names.h"

namespace compound {

namespace {

/// Whether the walk may go from `storage` to this entry.
bool CanEnter(const std::vector<RawEntry>& entries, std::uint32_t index, const std::string& label,
              Complaints& complaints) {
  const char* problem = nullptr;
  if (index >= entries.size()) {
    problem = "leads to an entry that the directory does not have";
  } else if (entries[index].reached) {
    problem = "leads to an entry that has its place already";
  } else if (entries[index].type == Unused) {
    problem = "leads to an unused entry";
  } else if (entries[index].type != Storage && entries[index].type != Stream) {
    problem = "leads to an entry that is neither a storage nor a stream";
  }
  if (problem != nullptr) complaints.Damaged(label, problem, {{}, {}, index});
  return problem == nullptr;
}

/// Whether the colours below and in these entries are those of a red-black tree: the top is black,
/// nothing red hangs below red, and all ways down meet as many black entries.
bool HasRightColors(const std::vector<RawEntry>& entries, std::uint32_t top) {
  // Each entry twice: on the way down and, when all below it is known, on the way back.
  std::vector<std::pair<std::uint32_t, bool>> path{{top, false}};
  std::map<std::uint32_t, std::size_t> blackHeight{{NoEntry, 1}};
  while (!path.empty()) {
    const auto [index, isWayBack] = path.back();
    path.pop_back();
    if (index == NoEntry) continue;
    const RawEntry& raw = entries[index];
    if (!isWayBack) {
      path.insert(path.end(), {{index, true}, {raw.left, false}, {raw.right, false}});
      continue;
    }
    for (const std::uint32_t link : {raw.left, raw.right}) {
      if (link != NoEntry && raw.color == Red && entries[link].color == Red) return false;
    }
    if (blackHeight[raw.left] != blackHeight[raw.right]) return false;
    blackHeight[index] = blackHeight[raw.left] + (raw.color == Black ? 1 : 0);
  }
  return top == NoEntry || entries[top].color == Black;
}

}  // namespace

std::vector<std::size_t> WalkTree(std::vector<RawEntry>& entries, std::size_t storage,
                                  const std::string& label, Complaints& complaints) {
  std::vector<std::size_t> members;
  std::vector<std::uint32_t> waiting;  // entries whose left side is being walked
  // A link that cannot be followed is cut, so that nothing meets it again.
  const auto enter = [&](std::uint32_t& link) {
    if (link != NoEntry && !CanEnter(entries, link, label, complaints)) link = NoEntry;
    if (link != NoEntry) entries[link].reached = true;
    return link;
  };
  std::uint32_t index = enter(entries[storage].child);
  while (index != NoEntry || !waiting.empty()) {
    for (; index != NoEntry; index = enter(entries[index].left)) waiting.push_back(index);
    members.push_back(waiting.back());
    waiting.pop_back();
    index = enter(entries[members.back()].right);
  }
  return members;
}

void CheckTree(std::vector<RawEntry>& entries, std::size_t storage,
               const std::vector<std::size_t>& members, const std::string& label,
               Complaints& complaints) {
  if (!HasRightColors(entries, entries[storage].child)) {
    complaints.Unusual(label, "the colours of its tree are not those of a red-black tree");
  }
  const auto before = [&](std::size_t a, std::size_t b) {
    return CompareNames(entries[a].name, entries[b].name) < 0;
  };
  std::vector<std::size_t> ordered = members;
  std::stable_sort(ordered.begin(), ordered.end(), before);
  if (ordered != members) {
    complaints.Unusual(label, "what it holds is out of order: a search by name may miss something");
  }
  for (std::size_t i = 1; i < ordered.size(); ++i) {
    if (before(ordered[i - 1], ordered[i])) continue;
    RawEntry& second = entries[ordered[i]];
    second.entry.damaged = true;
    complaints.Damaged(label, "two of its elements are called " + Printable(second.name),
                       {second.place});
  }
}

}  // namespace compound
