#include "compound/sector_links.h"

#include <cstring>

namespace {

std::uint32_t Word(const std::byte* bytes, std::uint32_t index) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes + std::size_t{index} * sizeof word, sizeof word);
  return word;
}

}  // namespace

// The chain may end with either mark, of its end or of a free sector: some libraries write the
// latter. Nothing looks for its end, only for the sectors that a FAT of the file's size needs.
HRESULT DifatLinks::After(std::uint32_t sector, std::uint32_t /*most*/, SectorRun* run) {
  const std::byte* bytes = nullptr;
  const HRESULT result = source_.Look(sector, &bytes);
  if (FAILED(result)) return result;
  *run = {Word(bytes, source_.SectorSize() / 4 - 1), 1};
  return run->start < source_.SectorCount() ? S_OK : STG_E_DOCFILECORRUPT;
}

// Only the words of chains that are followed are looked at. The others may say what they like:
// there are design programs that fill the end of the FAT with words of sectors beyond the file
// instead of marks of free ones, writers that leave numbers of no sector in words of free ones, and
// libraries that do not mark the sectors of the FAT and the DIFAT as such.
HRESULT LinkTable::After(std::uint32_t sector, std::uint32_t most, SectorRun* run) {
  std::uint32_t place = 0;
  const std::byte* words = nullptr;
  HRESULT result = PlaceOf(sector / WordsPerSector(), &place);
  if (SUCCEEDED(result)) result = source_.Look(place, &words);
  if (FAILED(result)) return result;
  std::uint32_t at = sector % WordsPerSector();
  *run = {Word(words, at), 1};
  if (run->start >= Count()) return STG_E_DOCFILECORRUPT;
  if (run->start != sector + 1) return S_OK;
  // The neighbours' words follow.
  const std::uint32_t limit = Count() - run->start;
  if (most > limit) most = limit;
  while (run->count < most && ++at < WordsPerSector() &&
         Word(words, at) == run->start + run->count) {
    ++run->count;
  }
  return S_OK;
}

Fat::Fat(SectorSource& source)
    : LinkTable(source), difatLinks_(source), difat_(source.Header().difatStart) {}

HRESULT Fat::PlaceOf(std::uint32_t index, std::uint32_t* sector) {
  if (index < HeaderDifatEntries) {
    *sector = source_.Header().difat[index];
    return S_OK;
  }
  const std::uint32_t perSector = WordsPerSector() - 1;
  const std::uint32_t beyond = index - HeaderDifatEntries;
  SectorRun place;
  const std::byte* words = nullptr;
  HRESULT result = difat_.Find(difatLinks_, beyond / perSector, 1, &place);
  if (SUCCEEDED(result)) result = source_.Look(place.start, &words);
  if (SUCCEEDED(result)) *sector = Word(words, beyond % perSector);
  return result;
}

MiniFat::MiniFat(SectorSource& source, Fat& fat)
    : LinkTable(source), fat_(fat), places_(source.Header().miniFatStart) {}

HRESULT MiniFat::PlaceOf(std::uint32_t index, std::uint32_t* sector) {
  SectorRun place;
  const HRESULT result = places_.Find(fat_, index, 1, &place);
  *sector = place.start;
  return result;
}
