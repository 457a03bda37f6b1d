#include "tools/compound_check/sector_table.h"

#include <algorithm>

namespace compound {

void SectorTable::Append(const std::vector<std::uint32_t>& words, std::uint64_t place) {
  parts_.push_back({next_.size(), place});
  next_.insert(next_.end(), words.begin(), words.end());
}

std::uint64_t SectorTable::PlaceOf(std::size_t word) const {
  const auto after =
      std::upper_bound(parts_.begin(), parts_.end(), word,
                       [](std::size_t w, const Part& part) { return w < part.first; });
  const Part& part = *(after - 1);
  return part.place + 4 * (word - part.first);
}

void SectorTable::SetCount(std::uint64_t sectors) {
  owner_.assign(static_cast<std::size_t>(sectors), 0);
}

std::uint32_t SectorTable::NewOwner(const std::string& name) {
  owners_.push_back({name});
  return static_cast<std::uint32_t>(owners_.size() - 1);
}

bool SectorTable::Own(SectorLink link, std::uint32_t who) {
  const Evidence evidence = {link.place, {}, link.sector};
  if (link.sector > MaxSector) {
    Damage(who, "its chain of " + kindName_ + "s breaks off", evidence);
    return false;
  }
  if (link.sector >= owner_.size()) {
    Damage(who, "leads to a " + kindName_ + " that the file does not have", evidence);
    return false;
  }
  const std::uint32_t other = owner_[link.sector];
  if (other == 0) {
    owner_[link.sector] = who;
    return true;
  }
  owners_[other].damaged = true;
  Damage(who,
         other == who ? "its chain of " + kindName_ + "s runs in a circle"
                      : "has a " + kindName_ + " in common with " + owners_[other].name,
         evidence);
  return false;
}

std::vector<std::uint32_t> SectorTable::Chain(SectorLink start, std::uint32_t who,
                                              std::optional<std::uint64_t> needed) {
  std::vector<std::uint32_t> chain;
  for (SectorLink link = start; link.sector != EndOfChain;) {
    if (link.sector == FreeSector && needed && chain.size() == *needed) {
      complaints_.Unusual(owners_[who].name, "the end of its chain is not marked",
                          {link.place, EndOfChain, FreeSector});
      break;
    }
    if (!Own(link, who)) break;
    chain.push_back(link.sector);
    link = {next_[link.sector], PlaceOf(link.sector)};
  }
  return chain;
}

void SectorTable::Damage(std::uint32_t who, const std::string& what, const Evidence& evidence) {
  owners_[who].damaged = true;
  complaints_.Damaged(owners_[who].name, what, evidence);
}

void SectorTable::CheckLeaks() const {
  struct {
    std::size_t count = 0, first = 0;
  } unowned, beyond;
  for (std::size_t i = next_.size(); i-- > 0;) {
    if (next_[i] == FreeSector || (i < owner_.size() && owner_[i] != 0)) continue;
    auto& leak = i < owner_.size() ? unowned : beyond;
    ++leak.count;
    leak.first = i;
  }
  const auto complain = [this](const auto& leak, const std::string& what) {
    if (leak.count == 0) return;
    complaints_.Unusual(tableName_, std::to_string(leak.count) + " " + kindName_ + "s " + what,
                        {PlaceOf(leak.first), FreeSector, next_[leak.first]});
  };
  complain(unowned, "are taken and belong to nothing");
  complain(beyond, "are taken that the file does not have");
}

}  // namespace compound
