#include "compound/sector_links.h"

#include <cstring>

namespace {

std::uint32_t Word(const std::byte* bytes, std::uint32_t index) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes + std::size_t{index} * sizeof word, sizeof word);
  return word;
}

}  // namespace

// Relaxed: the chain is to end with the mark of an end. Some writers put that of a free sector, as
// rust-cfb notes. Nothing here looks for the end, only for the sectors that a chain needs.
Outcome DifatLinks::After(std::uint32_t sector, std::uint32_t /*most*/, SectorRun* run) {
  const std::byte* bytes = nullptr;
  const Outcome outcome = source_.Look(sector, &bytes);
  if (outcome != Outcome::Done) return outcome;
  *run = {Word(bytes, source_.SectorSize() / 4 - 1), 1};
  return run->start < source_.SectorCount() ? Outcome::Done : Outcome::Corrupt;
}

// Relaxed: words of sectors that no chain has are to be marks of free sectors, and those of the
// FAT's and the DIFAT's own sectors their marks. Altium Designer fills the rest of the last FAT
// sector with other words, and files are about that name sectors beyond the end in free ones or
// lack the marks (both known from reports to rust-cfb). Only the words of chains that are followed
// are looked at.
Outcome LinkTable::After(std::uint32_t sector, std::uint32_t most, SectorRun* run) {
  std::uint32_t place = 0;
  const std::byte* words = nullptr;
  Outcome outcome = PlaceOf(sector / WordsPerSector(), &place);
  if (outcome == Outcome::Done) outcome = source_.Look(place, &words);
  if (outcome != Outcome::Done) return outcome;
  std::uint32_t at = sector % WordsPerSector();
  *run = {Word(words, at), 1};
  if (run->start >= Count()) return Outcome::Corrupt;
  if (run->start != sector + 1) return Outcome::Done;
  // The neighbours' words follow.
  const std::uint32_t limit = Count() - run->start;
  if (most > limit) most = limit;
  while (run->count < most && ++at < WordsPerSector() &&
         Word(words, at) == run->start + run->count) {
    ++run->count;
  }
  return Outcome::Done;
}

Fat::Fat(SectorSource& source)
    : LinkTable(source), difatLinks_(source), difat_(source.Header().difatStart) {}

Outcome Fat::PlaceOf(std::uint32_t index, std::uint32_t* sector) {
  if (index < HeaderDifatEntries) {
    *sector = source_.Header().difat[index];
    return Outcome::Done;
  }
  const std::uint32_t perSector = WordsPerSector() - 1;
  const std::uint32_t beyond = index - HeaderDifatEntries;
  SectorRun place;
  const std::byte* words = nullptr;
  Outcome outcome = difat_.Find(difatLinks_, beyond / perSector, 1, &place);
  if (outcome == Outcome::Done) outcome = source_.Look(place.start, &words);
  if (outcome == Outcome::Done) *sector = Word(words, beyond % perSector);
  return outcome;
}

MiniFat::MiniFat(SectorSource& source, Fat& fat)
    : LinkTable(source), fat_(fat), places_(source.Header().miniFatStart) {}

Outcome MiniFat::PlaceOf(std::uint32_t index, std::uint32_t* sector) {
  SectorRun place;
  const Outcome outcome = places_.Find(fat_, index, 1, &place);
  *sector = place.start;
  return outcome;
}
