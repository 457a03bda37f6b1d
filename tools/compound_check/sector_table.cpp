#include "tools/compound_check/sector_table.h"

namespace compound {

void SectorTable::SetCount(std::uint64_t sectors) {
  owner.assign(static_cast<std::size_t>(sectors), 0);
}

std::uint32_t SectorTable::NewOwner(const std::string& name) {
  names.push_back(name);
  return static_cast<std::uint32_t>(names.size() - 1);
}

bool SectorTable::Own(std::uint32_t sector, std::uint32_t who) {
  if (sector >= owner.size()) {
    complaints.Add(names[who], kindName, sector, "expected one below", owner.size());
    return false;
  }
  if (owner[sector] != 0) {
    complaints.Add(names[who], kindName, sector, "expected unowned, found owner",
                   names[owner[sector]]);
    return false;
  }
  owner[sector] = who;
  return true;
}

std::vector<std::uint32_t> SectorTable::Chain(std::uint32_t start, const std::string& name) {
  std::vector<std::uint32_t> chain;
  const std::uint32_t who = NewOwner(name);
  for (std::uint32_t sector = start; sector != EndOfChain && Own(sector, who);) {
    chain.push_back(sector);
    sector = next[sector];
  }
  return chain;
}

void SectorTable::CheckLeaks() const {
  for (std::size_t i = 0; i < next.size(); ++i) {
    const bool exists = i < owner.size();
    if (next[i] == FreeSector || (exists && owner[i] != 0)) continue;
    complaints.Add(kindName, i, exists ? "without owner" : "beyond the end", "expected",
                   std::uint32_t{FreeSector}, "found", next[i]);
  }
}

}  // namespace compound
