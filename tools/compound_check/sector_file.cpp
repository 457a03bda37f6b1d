#include "tools/compound_check/sector_file.h"

#include <algorithm>
#include <istream>

#include "tools/compound_check/compound_bytes.h"

namespace compound {

namespace {

constexpr std::size_t HeaderSize = 512;
constexpr std::size_t HeaderDifat = 109;

}  // namespace

bool SectorFile::Read() {
  if (!CheckHeader()) return false;
  ReadDifat();
  ReadFat();
  CheckMarks();
  CheckRangeLock();
  return true;
}

std::uint32_t SectorFile::HeaderWord(std::size_t offset) const { return Word(header, offset); }

bool SectorFile::CheckHeader() {
  file.clear();
  file.seekg(0, std::ios::end);
  const std::streamoff end = file.tellg();
  if (end < static_cast<std::streamoff>(HeaderSize) || !ReadBytes(file, 0, HeaderSize, header)) {
    complaints.Add("header: file length expected 0x200 or more, found", end);
    return false;
  }
  version = static_cast<std::uint32_t>(Number(header, 26, 2));
  sectorSize = IsVersion3() ? 512 : 4096;
  const bool readable = CheckHeaderFields();
  const auto length = static_cast<std::uint64_t>(end);
  complaints.Expect("whole sectors, bytes over", "file length:", 0, length % sectorSize);
  fat.SetCount(CeilDivide(length, sectorSize) - 1);
  std::string rest;
  if (length >= sectorSize && ReadBytes(file, HeaderSize, sectorSize - HeaderSize, rest)) {
    complaints.Require(rest.find_first_not_of('\0') == rest.npos, "zeros after 0x200",
                       "header:", 1);
  }
  return readable;
}

/// False when the file is of no kind that this reads.
bool SectorFile::CheckHeaderFields() {
  const struct {
    std::string_view what;
    std::size_t offset;
    std::uint64_t expected;
    int width;
    bool needed;
  } fields[] = {
      {"signature", 0, 0xE11AB1A1E011CFD0, 8, true},
      {"class id", 8, 0, 8, false},
      {"class id", 16, 0, 8, false},
      {"minor version", 24, 0x3E, 2, false},
      {"major version", 26, IsVersion3() ? 3U : 4U, 2, true},
      {"byte order", 28, 0xFFFE, 2, false},
      {"sector shift", 30, IsVersion3() ? 9U : 12U, 2, false},
      {"mini sector shift", 32, 6, 2, false},
      {"reserved", 34, 0, 6, false},
      {"transaction signature", 52, 0, 4, false},
      {"cutoff", 56, parameters.cutoff, 4, false},
  };
  bool readable = true;
  for (const auto& field : fields) {
    const std::uint64_t found = Number(header, field.offset, field.width);
    const bool fits = complaints.Expect(field.what, "header:", field.expected, found);
    if (!fits && field.needed) readable = false;
  }
  return readable;
}

bool SectorFile::ReadSector(std::uint64_t sector, std::string& bytes) {
  return sector < fat.Count() && ReadBytes(file, (sector + 1) * sectorSize, sectorSize, bytes);
}

/// Collects the numbers of the FAT's sectors.
void SectorFile::ReadDifat() {
  const std::uint32_t links = ReadDifatChain(fat.NewOwner("DIFAT:"));
  complaints.Expect("DIFAT sectors", "header:", links, HeaderWord(72));
  const std::uint32_t fatSectors = HeaderWord(44);
  const std::uint64_t beyond = fatSectors > HeaderDifat ? fatSectors - HeaderDifat : 0;
  complaints.Expect("DIFAT sectors needed", "DIFAT:", CeilDivide(beyond, sectorSize / 4 - 1),
                    links);
  for (std::size_t i = fatSectors; i < difat.size(); ++i) {
    complaints.Expect("unused word", "DIFAT:", FreeSector, difat[i]);
  }
  difat.resize(std::min<std::size_t>(difat.size(), fatSectors));
  TakeFatSectors();
}

/// The numbers in the header, then those of the chain; returns the sectors of the chain.
std::uint32_t SectorFile::ReadDifatChain(std::uint32_t owner) {
  const std::size_t perSector = sectorSize / 4 - 1;
  for (std::size_t i = 0; i < HeaderDifat; ++i) difat.push_back(HeaderWord(76 + 4 * i));
  std::uint32_t links = 0;
  std::uint32_t sector = HeaderWord(68);
  std::string bytes;
  for (; sector <= MaxSector && fat.Own(sector, owner); ++links) {
    if (!ReadSector(sector, bytes)) break;
    difatSectors.push_back(sector);
    for (std::size_t i = 0; i < perSector; ++i) difat.push_back(Word(bytes, 4 * i));
    sector = Word(bytes, 4 * perSector);
  }
  complaints.Expect("end of chain", "DIFAT:", EndOfChain, sector);
  return links;
}

/// A number that cannot be one of the FAT's sectors becomes FreeSector.
void SectorFile::TakeFatSectors() {
  const std::uint32_t owner = fat.NewOwner("FAT:");
  for (std::uint32_t& number : difat) {
    if (!fat.Own(number, owner)) number = FreeSector;
  }
}

void SectorFile::ReadFat() {
  std::string bytes;
  for (const std::uint32_t sector : difat) {
    const bool read = ReadSector(sector, bytes);
    // A file may name any number of sectors that are not there: they take no memory.
    if (!read && fat.next.size() >= fat.Count()) continue;
    for (std::size_t i = 0; i < sectorSize; i += 4) {
      fat.next.push_back(read ? Word(bytes, i) : std::uint32_t{FreeSector});
    }
  }
  complaints.Require(fat.next.size() >= fat.Count(), "covers the file, words",
                     "FAT:", fat.next.size());
  fat.next.resize(std::max(fat.next.size(), fat.Count()), FreeSector);
}

void SectorFile::CheckMarks() {
  for (const std::uint32_t sector : difat) {
    if (sector == FreeSector) continue;
    complaints.Expect("mark of a FAT sector", "FAT:", FatSector, fat.next[sector]);
  }
  for (const std::uint32_t sector : difatSectors) {
    complaints.Expect("mark of a DIFAT sector", "FAT:", DifatSector, fat.next[sector]);
  }
}

void SectorFile::CheckRangeLock() {
  if (IsVersion3() && parameters.lockOffset == Parameters().lockOffset) return;
  const std::uint64_t locked = parameters.lockOffset / sectorSize - 1;
  if (locked >= fat.Count()) return;
  const auto sector = static_cast<std::uint32_t>(locked);
  if (fat.Own(sector, fat.NewOwner("range lock:"))) {
    complaints.Expect("mark", "range lock:", EndOfChain, fat.next[sector]);
  }
}

std::vector<std::string> SectorFile::ReadChain(std::uint32_t start, const std::string& name) {
  std::vector<std::string> sectors;
  for (const std::uint32_t sector : fat.Chain(start, name)) {
    sectors.emplace_back();
    if (!ReadSector(sector, sectors.back())) sectors.back().assign(sectorSize, '\0');
  }
  return sectors;
}

}  // namespace compound
