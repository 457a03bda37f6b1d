#include "tools/compound_check/sector_file.h"

#include <algorithm>
#include <istream>
#include <set>

#include "tools/compound_check/compound_bytes.h"

namespace compound {

namespace {

constexpr std::size_t HeaderSize = 512;
constexpr std::size_t HeaderDifat = 109;
// Where the fields of the header stand.
constexpr std::size_t FatSectors = 44, FirstDifatSector = 68, DifatSectors = 72, Difat = 76;

enum class Meaning { Unusual, Damaged, Unreadable };

}  // namespace

bool SectorFile::Read() {
  if (!ReadHeader()) return false;
  ReadDifat();
  OwnTables();
  ReadFat();
  CheckMarks();
  return true;
}

std::uint32_t SectorFile::HeaderWord(std::size_t offset) const { return Word(header_, offset); }

bool SectorFile::ReadHeader() {
  file_.clear();
  file_.seekg(0, std::ios::end);
  const std::streamoff end = file_.tellg();
  length_ = end < 0 ? 0 : static_cast<std::uint64_t>(end);
  if (length_ == 0) complaints_.Damaged("file", "is empty");
  if (length_ == 0) return false;
  const bool complete = ReadBytes(file_, 0, HeaderSize, header_);
  version_ = static_cast<std::uint32_t>(Number(header_, 26, 2));
  sectorSize_ = IsVersion3() ? 512 : 4096;
  if (!CheckHeaderFields()) return false;
  if (!complete)
    complaints_.Damaged("file", "is too short for a header", {{}, HeaderSize, length_});
  if (!complete) return false;
  sectorsInFile_ = CeilDivide(length_, sectorSize_) - 1;
  if (length_ % sectorSize_ != 0) {
    complaints_.Unusual("file", "ends within a sector", {{}, 0, length_ % sectorSize_});
  }
  std::string rest;
  if (ReadBytes(file_, HeaderSize, sectorSize_ - HeaderSize, rest) &&
      rest.find_first_not_of('\0') != rest.npos) {
    complaints_.Unusual("header", "is not followed by zeros", {HeaderSize});
  }
  return true;
}

/// False when the file is of no kind that this reads.
bool SectorFile::CheckHeaderFields() {
  const struct {
    std::size_t offset;
    int width;
    std::uint64_t expected;
    Meaning meaning;  // of another value
    const char* what;
  } fields[] = {
      {0, 8, 0xE11AB1A1E011CFD0, Meaning::Unreadable, "this is no compound file"},
      {8, 8, 0, Meaning::Unusual, "the first half of its class is not zero"},
      {16, 8, 0, Meaning::Unusual, "the second half of its class is not zero"},
      {24, 2, 0x3E, Meaning::Unusual, "the minor version is not 62"},
      {26, 2, IsVersion3() ? 3U : 4U, Meaning::Unreadable, "the version is neither 3 nor 4"},
      {28, 2, 0xFFFE, Meaning::Damaged, "the mark of the byte order is not the one there is"},
      {30, 2, IsVersion3() ? 9U : 12U, Meaning::Damaged, "the sector size is not the version's"},
      {32, 2, 6, Meaning::Damaged, "the size of small sectors is not 64"},
      {34, 6, 0, Meaning::Unusual, "reserved bytes are not zero"},
      {52, 4, 0, Meaning::Unusual, "the number of the transaction is not zero"},
      {56, 4, parameters_.cutoff, Meaning::Damaged, "the size limit of small streams is wrong"},
  };
  for (const auto& field : fields) {
    const std::uint64_t found = Number(header_, field.offset, field.width);
    if (found == field.expected) continue;
    complaints_.Add(field.meaning == Meaning::Unusual ? Grade::Unusual : Grade::Damaged, "header",
                    field.what, {field.offset, field.expected, found});
    if (field.meaning == Meaning::Unreadable) return false;
  }
  return true;
}

bool SectorFile::ReadSector(std::uint64_t sector, std::string& bytes) {
  return sector < sectorsInFile_ &&
         ReadBytes(file_, (sector + 1) * sectorSize_, sectorSize_, bytes);
}

/// Collects the numbers of the FAT's sectors.
void SectorFile::ReadDifat() {
  for (std::size_t i = 0; i < HeaderDifat; ++i) difat_.push_back(HeaderWord(Difat + 4 * i));
  ReadDifatChain();
  CheckDifatCounts();
  difat_.resize(std::min<std::size_t>(difat_.size(), HeaderWord(FatSectors)));
}

void SectorFile::ReadDifatChain() {
  const std::size_t perSector = sectorSize_ / 4 - 1;
  std::set<std::uint32_t> seen;
  std::uint32_t sector = HeaderWord(FirstDifatSector);
  for (std::string bytes; sector <= MaxSector;) {
    if (!seen.insert(sector).second || !ReadSector(sector, bytes)) {
      return complaints_.Damaged(
          "DIFAT", "its chain of sectors runs in a circle or out of the file", {{}, {}, sector});
    }
    difatSectors_.push_back(sector);
    for (std::size_t i = 0; i < perSector; ++i) difat_.push_back(Word(bytes, 4 * i));
    sector = Word(bytes, 4 * perSector);
  }
  if (sector == EndOfChain) return;
  complaints_.Add(sector == FreeSector ? Grade::Unusual : Grade::Damaged, "DIFAT",
                  "the end of its chain is not marked", {{}, EndOfChain, sector});
}

void SectorFile::CheckDifatCounts() {
  const std::uint32_t fatSectors = HeaderWord(FatSectors);
  const auto links = static_cast<std::uint32_t>(difatSectors_.size());
  if (HeaderWord(DifatSectors) != links) {
    complaints_.Unusual("header", "the number of DIFAT sectors is wrong",
                        {DifatSectors, links, HeaderWord(DifatSectors)});
  }
  const std::uint64_t beyond = fatSectors > HeaderDifat ? fatSectors - HeaderDifat : 0;
  const std::uint64_t needed = CeilDivide(beyond, sectorSize_ / 4 - 1);
  if (links > needed)
    complaints_.Unusual("DIFAT", "is longer than it need be", {{}, needed, links});
  if (links < needed) {
    complaints_.Damaged("DIFAT", "does not name all sectors of the FAT", {{}, needed, links});
  }
  for (std::size_t i = fatSectors; i < difat_.size(); ++i) {
    if (difat_[i] == FreeSector) continue;
    return complaints_.Unusual("DIFAT", "names sectors beyond those that it has",
                               {{}, FreeSector, difat_[i]});
  }
}

/// Only what the FAT covers counts as being there, so that tables take no more memory than their
/// sectors do in the file. A number that cannot be one of the FAT's sectors becomes FreeSector.
void SectorFile::OwnTables() {
  std::vector<std::uint32_t> named = difat_;
  std::sort(named.begin(), named.end());
  const auto distinct = std::unique(named.begin(), named.end()) - named.begin();
  const std::uint64_t covered = static_cast<std::uint64_t>(distinct) * (sectorSize_ / 4);
  fat.SetCount(std::min(covered, sectorsInFile_));
  if (covered < sectorsInFile_) {
    complaints_.Unusual("FAT", "says nothing of the sectors at the end of the file",
                        {{}, sectorsInFile_, covered});
  }
  const std::uint32_t difatOwner = fat.NewOwner("DIFAT");
  for (const std::uint32_t sector : difatSectors_) fat.Own({sector}, difatOwner);
  const std::uint32_t fatOwner = fat.NewOwner("FAT");
  for (std::uint32_t& number : difat_) {
    if (!fat.Own({number}, fatOwner)) number = FreeSector;
  }
}

void SectorFile::ReadFat() {
  std::string bytes;
  std::vector<std::uint32_t> words(sectorSize_ / 4);
  for (const std::uint32_t sector : difat_) {
    const bool read = ReadSector(sector, bytes);
    if (!read && sector != FreeSector) {
      complaints_.Damaged("FAT", "a sector of it is cut off by the end of the file");
    }
    // A file may name any number of sectors that are not there: they take no memory.
    if (!read && fat.Words() >= fat.Count()) continue;
    for (std::size_t i = 0; i < words.size(); ++i) {
      words[i] = read ? Word(bytes, 4 * i) : std::uint32_t{FreeSector};
    }
    fat.Append(words, read ? Offset(sector) : 0);
  }
}

void SectorFile::CheckMarks() {
  const auto check = [this](std::uint32_t sector, std::uint32_t mark, const char* name) {
    if (sector >= fat.Count() || fat.Word(sector) == mark) return;
    complaints_.Unusual(name, "a sector of it is not marked as such",
                        {Offset(sector), mark, fat.Word(sector)});
  };
  for (const std::uint32_t sector : difat_) check(sector, FatSector, "FAT");
  for (const std::uint32_t sector : difatSectors_) check(sector, DifatSector, "DIFAT");
}

void SectorFile::CheckRangeLock() {
  if (IsVersion3() && parameters_.lockOffset == Parameters().lockOffset) return;
  const std::uint64_t locked = parameters_.lockOffset / sectorSize_ - 1;
  if (locked >= fat.Count()) return;
  const auto sector = static_cast<std::uint32_t>(locked);
  const std::uint32_t word = fat.Word(sector);
  if (!fat.IsOwned(sector) && word == EndOfChain) {
    fat.Own({sector}, fat.NewOwner("range lock"));
  } else {
    complaints_.Unusual("range lock", "its sector is not kept free for it",
                        {Offset(sector), EndOfChain, word});
  }
}

ChainBytes SectorFile::ReadChain(std::size_t headerField, const std::string& name) {
  ChainBytes chain;
  const std::uint32_t who = fat.NewOwner(name);
  std::string bytes;
  for (const std::uint32_t sector : fat.Chain({HeaderWord(headerField), headerField}, who)) {
    if (!ReadSector(sector, bytes)) {
      fat.Damage(who, "a sector of it is cut off by the end of the file", {Offset(sector)});
    }
    chain.bytes += bytes;
    chain.places.push_back(Offset(sector));
  }
  return chain;
}

}  // namespace compound
