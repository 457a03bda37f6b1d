#include "compound/table_space.h"

namespace {

std::uint64_t RoundUp(std::uint64_t count, std::uint64_t step) {
  return (count + step - 1) / step * step;
}

}  // namespace

Outcome TableSpace::Secure(ContentCounts content) {
  if (content.sectors <= secured_.sectors && content.entries <= secured_.entries &&
      content.miniSectors <= secured_.miniSectors) {
    return Outcome::Done;
  }
  content.entries = RoundUp(content.entries, parameters_.EntriesPerSector());
  content.miniSectors = RoundUp(content.miniSectors, parameters_.MarksPerSector());
  const TableCounts tables = CountTables(parameters_, content);
  if (tables.total > LargestFile(parameters_)) return Outcome::NoSpace;
  const Outcome outcome = file_.Reserve(FileSize(parameters_, tables));
  if (outcome == Outcome::Done) secured_ = content;
  return outcome;
}
