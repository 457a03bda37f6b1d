#pragma once

/// A compound file below its directory: the header and the tables that say which sectors belong
/// together.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compound_check/compound_checker.h"
#include "tools/compound_check/sector_table.h"

namespace compound {

/// The file in the order in which it is read:
///   header     512 bytes, in version 4 followed by zeros to 4096
///   DIFAT      109 sector numbers in the header, then a chain of sectors
///   FAT        one 32-bit word for each sector that follows the header
class SectorFile {
 public:
  SectorFile(std::istream& input, const Parameters& given, Complaints& target)
      : fat("sector", target), file(input), parameters(given), complaints(target) {}

  /// Reads and checks the header and the tables; false when nothing more can be read.
  bool Read();

  bool IsVersion3() const { return version == 3; }
  std::size_t SectorSize() const { return sectorSize; }
  /// A 32-bit field of the header.
  std::uint32_t HeaderWord(std::size_t offset) const;
  /// Where a sector begins in the file.
  std::uint64_t Offset(std::uint32_t sector) const { return (sector + 1ULL) * sectorSize; }

  /// The sectors of a chain, which own their places from now on.
  std::vector<std::string> ReadChain(std::uint32_t start, const std::string& name);

  SectorTable fat;

 private:
  bool CheckHeader();
  bool CheckHeaderFields();
  bool ReadSector(std::uint64_t sector, std::string& bytes);
  void ReadDifat();
  std::uint32_t ReadDifatChain(std::uint32_t owner);
  void TakeFatSectors();
  void ReadFat();
  void CheckMarks();
  void CheckRangeLock();

  std::istream& file;
  const Parameters& parameters;
  Complaints& complaints;
  std::string header;
  std::uint32_t version = 0;
  std::size_t sectorSize = 0;
  std::vector<std::uint32_t> difat, difatSectors;
};

}  // namespace compound
