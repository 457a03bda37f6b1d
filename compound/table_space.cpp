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
  if (file_.IsInMemory() && content.sectors * parameters_.sectorSize >= parameters_.largeInMemory) {
    ContentCounts ahead = content;
    for (std::uint64_t* count : {&ahead.sectors, &ahead.entries, &ahead.miniSectors}) {
      *count += *count / 8;
    }
    if (TakeTables(ahead) == Outcome::Done) {
      secured_ = ahead;
      return Outcome::Done;
    }
    // Where space is short, what is really needed has to do.
  }
  const Outcome outcome = TakeTables(content);
  if (outcome == Outcome::Done) secured_ = content;
  return outcome;
}

/// Takes space for the tables behind `content`, and for that itself while it is small or not in
/// memory.
Outcome TableSpace::TakeTables(const ContentCounts& content) {
  const TableCounts tables = CountTables(parameters_, content);
  if (tables.total > LargestFile(parameters_)) return Outcome::NoSpace;
  const std::uint64_t begin = (content.sectors + 1) * parameters_.sectorSize;
  const std::uint64_t end = FileSize(parameters_, tables);
  const Outcome outcome = file_.IsInMemory() && begin >= parameters_.largeInMemory
                              ? file_.Take(begin, end)
                              : file_.Reserve(end);
  if (outcome == Outcome::Done) tablesAt_ = content.sectors;
  return outcome;
}

std::uint32_t TableSpace::Place(const ContentCounts& content) {
  // On a disk the space right behind the streams was taken with them.
  if (!file_.IsInMemory()) return static_cast<std::uint32_t>(content.sectors);
  // Where it fails, the space further on is there. Where not, that is no more where the tables are.
  if (TakeTables(content) == Outcome::Done) secured_ = content;
  return static_cast<std::uint32_t>(tablesAt_);
}
