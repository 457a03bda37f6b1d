#pragma once

/// A compound file below its directory: the header and the tables that say which sectors belong
/// together.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/compound_check/compound_checker.h"
#include "tools/compound_check/sector_table.h"

namespace compound {

/// What a chain of sectors holds, and where each of them begins in the file.
struct ChainBytes {
  std::string bytes;
  std::vector<std::uint64_t> places;
};

/// The file in the order in which it is read:
///   header     512 bytes, in version 4 followed by zeros to 4096
///   DIFAT      109 sector numbers in the header, then a chain of sectors
///   FAT        one 32-bit word for each sector that follows the header
class SectorFile {
 public:
  SectorFile(std::istream& input, const Parameters& given, Complaints& target)
      : fat("FAT", "sector", target), file_(input), parameters_(given), complaints_(target) {}

  /// Reads and checks the header and the tables; false when nothing more can be read.
  bool Read();

  bool IsVersion3() const { return version_ == 3; }
  std::size_t SectorSize() const { return sectorSize_; }
  std::uint64_t FileLength() const { return length_; }
  /// A 32-bit field of the header.
  std::uint32_t HeaderWord(std::size_t offset) const;
  /// Where a sector begins in the file.
  std::uint64_t Offset(std::uint32_t sector) const { return (sector + 1ULL) * sectorSize_; }

  /// The bytes of the chain that begins at this field of the header. Its sectors are owned from now
  /// on.
  ChainBytes ReadChain(std::size_t headerField, const std::string& name);

  /// Looks at the sector that the system locks while it shares the file. Call it when all that has
  /// an owner has it.
  void CheckRangeLock();

  SectorTable fat;

 private:
  bool ReadHeader();
  bool CheckHeaderFields();
  bool ReadSector(std::uint64_t sector, std::string& bytes);
  void ReadDifat();
  void ReadDifatChain();
  void CheckDifatCounts();
  void OwnTables();
  void ReadFat();
  void CheckMarks();

  std::istream& file_;
  const Parameters& parameters_;
  Complaints& complaints_;
  std::string header_;
  std::uint64_t length_ = 0;
  std::uint64_t sectorsInFile_ = 0;
  std::uint32_t version_ = 0;
  std::size_t sectorSize_ = 0;
  std::vector<std::uint32_t> difat_, difatSectors_;
};

}  // namespace compound
