#include "compound/tables.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "compound/directory.h"
#include "compound/document.h"

namespace {

constexpr char16_t RootName[] = u"Root Entry";
constexpr std::uint8_t Signature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

std::uint32_t StartOf(const std::vector<SectorRun>& runs) {
  return runs.empty() ? MarkEndOfChain : runs.front().start;
}

std::vector<std::uint32_t> SectorsOf(const std::vector<SectorRun>& runs) {
  std::vector<std::uint32_t> sectors;
  for (const SectorRun& run : runs) {
    for (std::uint32_t i = 0; i < run.count; ++i) sectors.push_back(run.start + i);
  }
  return sectors;
}

/// Writes one file's tables, once.
class TableWriter {
 public:
  TableWriter(const TableContents& contents, GatheringFile& file)
      : contents_(contents),
        sectorSize_(contents.parameters.sectorSize),
        file_(file),
        counts_(CountTables(contents.parameters, {contents.place, contents.directory.Count(),
                                                  contents.miniSpace.End()})),
        next_(contents.place) {}

  Outcome Write();

  /// Bytes of the whole file.
  std::uint64_t Size() const { return FileSize(contents_.parameters, counts_); }

 private:
  /// A run of a chain together with what follows its last sector.
  struct FatRun {
    SectorRun run;
    std::uint32_t after;          // mark of the last sector
    std::uint32_t everyMark = 0;  // mark of all sectors, for those that form no chain; else 0
  };

  std::vector<SectorRun> Place(std::uint32_t count);
  void AddChain(const SectorChain& chain);
  void AddChain(const std::vector<SectorRun>& runs);
  void AddMarked(const std::vector<SectorRun>& runs, std::uint32_t mark);
  void AddMiniChain(const SectorChain& chain);

  Outcome WriteDirectory();
  Outcome WriteBlock(const CompoundEntry& storage, std::vector<CompoundEntry*>* storages);
  Outcome WriteRecord(const CompoundEntry& entry, const TreeNode& node, std::uint32_t base);
  Outcome PutRecord(const CompoundEntryRecord& record);
  Outcome PadDirectory();
  Outcome WriteMiniFat();
  Outcome WriteFat();
  Outcome WriteDifat();
  Outcome WriteHeader();
  Outcome Put(const std::vector<SectorRun>& runs, std::uint64_t offset, const void* data,
              std::size_t size);

  const TableContents& contents_;
  const std::uint32_t sectorSize_;  // bytes
  GatheringFile& file_;
  const TableCounts counts_;
  std::uint32_t next_;  // the sector where the next table goes
  std::vector<SectorRun> directoryRuns_;
  std::vector<SectorRun> miniFatRuns_;
  std::vector<SectorRun> fatRuns_;
  std::vector<SectorRun> difatRuns_;
  std::vector<FatRun> chains_;
  std::vector<std::uint32_t> miniFat_;
  std::vector<std::uint32_t> fatSectors_;
  std::vector<CompoundEntryRecord> records_;  // of the sector that is being filled
  std::uint32_t writtenEntries_ = 0;
  std::uint32_t nextBlock_ = 1;  // entry number of the next storage's first child
};

Outcome TableWriter::Write() {
  directoryRuns_ = Place(counts_.directory);
  miniFatRuns_ = Place(counts_.miniFat);
  fatRuns_ = Place(counts_.fat);
  difatRuns_ = Place(counts_.difat);
  fatSectors_ = SectorsOf(fatRuns_);
  miniFat_.assign(std::size_t{counts_.miniFat} * contents_.parameters.MarksPerSector(), MarkFree);
  for (const auto step :
       {&TableWriter::WriteDirectory, &TableWriter::WriteMiniFat, &TableWriter::WriteFat,
        &TableWriter::WriteDifat, &TableWriter::WriteHeader}) {
    const Outcome outcome = (this->*step)();
    if (outcome != Outcome::Done) return outcome;
  }
  return Outcome::Done;
}

/// The next `count` sectors, around the locked one.
std::vector<SectorRun> TableWriter::Place(std::uint32_t count) {
  const std::uint32_t locked = LockedSector(contents_.parameters);
  std::vector<SectorRun> runs;
  while (count > 0) {
    if (next_ == locked) ++next_;
    const std::uint32_t taken = next_ < locked ? std::min(count, locked - next_) : count;
    runs.push_back({next_, taken});
    next_ += taken;
    count -= taken;
  }
  return runs;
}

void TableWriter::AddChain(const SectorChain& chain) {
  const std::uint32_t runs = chain.RunCount();
  for (std::uint32_t i = 0; i < runs; ++i) {
    chains_.push_back({chain.Run(i), i + 1 < runs ? chain.Run(i + 1).start : MarkEndOfChain});
  }
}

void TableWriter::AddChain(const std::vector<SectorRun>& runs) {
  for (std::size_t i = 0; i < runs.size(); ++i) {
    chains_.push_back({runs[i], i + 1 < runs.size() ? runs[i + 1].start : MarkEndOfChain});
  }
}

void TableWriter::AddMarked(const std::vector<SectorRun>& runs, std::uint32_t mark) {
  for (const SectorRun& run : runs) chains_.push_back({run, mark, mark});
}

void TableWriter::AddMiniChain(const SectorChain& chain) {
  std::uint32_t* link = nullptr;
  for (std::uint32_t i = 0; i < chain.RunCount(); ++i) {
    const SectorRun& run = chain.Run(i);
    if (link != nullptr) *link = run.start;
    for (std::uint32_t k = 0; k < run.count; ++k) {
      link = &miniFat_[run.start + k];
      *link = run.start + k + 1;
    }
  }
  if (link != nullptr) *link = MarkEndOfChain;
}

Outcome TableWriter::WriteDirectory() {
  const CompoundEntry& root = *contents_.directory.Root();
  Outcome outcome = WriteRecord(root, {NoStream, NoStream, ColorBlack}, 0);
  std::vector<CompoundEntry*> level;
  if (outcome == Outcome::Done) outcome = WriteBlock(root, &level);
  while (outcome == Outcome::Done && !level.empty()) {
    std::vector<CompoundEntry*> deeper;
    for (const CompoundEntry* storage : level) {
      outcome = WriteBlock(*storage, &deeper);
      if (outcome != Outcome::Done) return outcome;
    }
    level.swap(deeper);
  }
  return outcome != Outcome::Done ? outcome : PadDirectory();
}

/// Writes the children of a storage; appends those that have children themselves to `storages`.
Outcome TableWriter::WriteBlock(const CompoundEntry& storage,
                                std::vector<CompoundEntry*>* storages) {
  SortChildren(*storage.storage);
  const std::uint32_t count = storage.storage->childCount;
  CompoundEntry* entry = storage.storage->firstChild;
  const std::uint32_t base = writtenEntries_;
  Outcome outcome = Outcome::Done;
  VisitTree(0, count, FullLevels(count), [&](const TreeNode& node) {
    if (outcome == Outcome::Done) outcome = WriteRecord(*entry, node, base);
    if (!entry->IsStream() && entry->storage->childCount > 0) storages->push_back(entry);
    entry = entry->next;
  });
  return outcome;
}

Outcome TableWriter::WriteRecord(const CompoundEntry& entry, const TreeNode& node,
                                 std::uint32_t base) {
  CompoundEntryRecord record = {};
  const bool isRoot = entry.parent == nullptr;
  const char16_t* name = isRoot ? RootName : entry.name.units;
  const std::size_t length = isRoot ? std::size(RootName) - 1 : entry.name.length;
  std::memcpy(record.name, name, length * sizeof(char16_t));
  record.nameBytes = static_cast<std::uint16_t>((length + 1) * sizeof(char16_t));
  record.color = node.color;
  record.left = node.left == NoStream ? NoStream : base + node.left;
  record.right = node.right == NoStream ? NoStream : base + node.right;
  record.child = NoStream;
  if (entry.IsStream()) {
    record.type = EntryStream;
    record.size = entry.size;
    record.start = entry.chain.Count() == 0 ? MarkEndOfChain : entry.chain.Start();
    if (contents_.parameters.IsMini(entry.size)) {
      AddMiniChain(entry.chain);
    } else {
      AddChain(entry.chain);
    }
  } else {
    const StorageInfo& info = *entry.storage;
    record.type = isRoot ? EntryRoot : EntryStorage;
    record.classId = info.classId;
    record.stateBits = info.stateBits;
    record.created = isRoot ? 0 : info.created;
    record.modified = info.modified;
    if (info.childCount > 0) record.child = nextBlock_ + TreeRoot(0, info.childCount);
    nextBlock_ += info.childCount;
  }
  if (isRoot) {
    record.size = std::uint64_t{contents_.miniSpace.End()} * MiniSectorSize;
    record.start =
        contents_.miniStream.Count() == 0 ? MarkEndOfChain : contents_.miniStream.Start();
    AddChain(contents_.miniStream);
  }
  return PutRecord(record);
}

/// Records go out by the sector.
Outcome TableWriter::PutRecord(const CompoundEntryRecord& record) {
  ++writtenEntries_;
  records_.push_back(record);
  const std::size_t perSector = contents_.parameters.EntriesPerSector();
  if (records_.size() < perSector) return Outcome::Done;
  const std::uint64_t offset = std::uint64_t{writtenEntries_ - perSector} * sizeof record;
  const Outcome outcome = Put(directoryRuns_, offset, records_.data(), sectorSize_);
  records_.clear();
  return outcome;
}

Outcome TableWriter::PadDirectory() {
  CompoundEntryRecord unused = {};
  unused.left = unused.right = unused.child = NoStream;
  const std::uint32_t perSector = contents_.parameters.EntriesPerSector();
  while (writtenEntries_ < counts_.directory * perSector) {
    const Outcome outcome = PutRecord(unused);
    if (outcome != Outcome::Done) return outcome;
  }
  return Outcome::Done;
}

Outcome TableWriter::WriteMiniFat() {
  return Put(miniFatRuns_, 0, miniFat_.data(), miniFat_.size() * sizeof(std::uint32_t));
}

Outcome TableWriter::WriteFat() {
  const std::uint32_t locked = LockedSector(contents_.parameters);
  AddChain(directoryRuns_);
  AddChain(miniFatRuns_);
  AddMarked(fatRuns_, MarkFat);
  AddMarked(difatRuns_, MarkDifat);
  if (locked < counts_.total) AddMarked({{locked, 1}}, MarkEndOfChain);
  std::sort(chains_.begin(), chains_.end(),
            [](const FatRun& a, const FatRun& b) { return a.run.start < b.run.start; });
  const std::uint32_t perSector = contents_.parameters.MarksPerSector();
  std::vector<std::uint32_t> marks(perSector);
  std::size_t at = 0;
  for (std::uint32_t sector = 0; sector < counts_.fat; ++sector) {
    const std::uint64_t begin = std::uint64_t{sector} * perSector;
    const std::uint64_t end = begin + perSector;
    std::fill(marks.begin(), marks.end(), MarkFree);
    for (; at < chains_.size() && chains_[at].run.start < end; ++at) {
      const FatRun& chain = chains_[at];
      const std::uint64_t runEnd = std::uint64_t{chain.run.start} + chain.run.count;
      std::uint64_t i = std::max<std::uint64_t>(begin, chain.run.start);
      for (; i < std::min(end, runEnd); ++i) {
        const bool last = i + 1 == runEnd;
        const std::uint32_t following = last ? chain.after : static_cast<std::uint32_t>(i + 1);
        marks[static_cast<std::size_t>(i - begin)] =
            chain.everyMark != 0 ? chain.everyMark : following;
      }
      if (runEnd > end) break;  // goes on in the next sector of the FAT
    }
    const std::uint64_t offset = std::uint64_t{sector} * sectorSize_;
    const Outcome outcome = Put(fatRuns_, offset, marks.data(), sectorSize_);
    if (outcome != Outcome::Done) return outcome;
  }
  return Outcome::Done;
}

Outcome TableWriter::WriteDifat() {
  const std::uint32_t perSector = contents_.parameters.MarksPerSector();
  const std::vector<std::uint32_t> sectors = SectorsOf(difatRuns_);
  std::vector<std::uint32_t> marks(perSector);
  std::size_t from = HeaderDifatEntries;
  for (std::size_t i = 0; i < sectors.size(); ++i) {
    std::fill(marks.begin(), marks.end(), MarkFree);
    const std::size_t part = std::min<std::size_t>(perSector - 1, fatSectors_.size() - from);
    std::copy_n(&fatSectors_[from], part, marks.begin());
    from += part;
    marks.back() = i + 1 < sectors.size() ? sectors[i + 1] : MarkEndOfChain;
    const std::uint64_t offset = i * std::uint64_t{sectorSize_};
    const Outcome outcome = Put(difatRuns_, offset, marks.data(), sectorSize_);
    if (outcome != Outcome::Done) return outcome;
  }
  return Outcome::Done;
}

Outcome TableWriter::WriteHeader() {
  const std::uint32_t sectorSize = sectorSize_;
  const bool isVersion4 = sectorSize == 4096;
  CompoundHeader header = {};
  std::memcpy(header.signature, Signature, sizeof Signature);
  header.minorVersion = 0x003E;
  header.majorVersion = isVersion4 ? 4 : 3;
  header.byteOrder = 0xFFFE;
  header.sectorShift = isVersion4 ? 12 : 9;
  header.miniSectorShift = MiniSectorShift;
  header.directorySectors = isVersion4 ? counts_.directory : 0;
  header.fatSectors = counts_.fat;
  header.directoryStart = StartOf(directoryRuns_);
  header.miniCutoff = contents_.parameters.miniCutoff;
  header.miniFatStart = StartOf(miniFatRuns_);
  header.miniFatSectors = counts_.miniFat;
  header.difatStart = StartOf(difatRuns_);
  header.difatSectors = counts_.difat;
  for (std::size_t i = 0; i < HeaderDifatEntries; ++i) {
    header.difat[i] = i < fatSectors_.size() ? fatSectors_[i] : MarkFree;
  }
  std::vector<std::byte> sector(sectorSize);
  std::memcpy(sector.data(), &header, sizeof header);
  return file_.Write(0, sector.data(), sector.size());
}

/// Writes into a table that lies in `runs`.
Outcome TableWriter::Put(const std::vector<SectorRun>& runs, std::uint64_t offset, const void* data,
                         std::size_t size) {
  auto* from = static_cast<const std::byte*>(data);
  for (const SectorRun& run : runs) {
    const std::uint64_t runSize = std::uint64_t{run.count} * sectorSize_;
    if (offset < runSize) {
      const std::size_t part = AtMost(size, runSize - offset);
      const Outcome outcome =
          file_.Write((std::uint64_t{run.start} + 1) * sectorSize_ + offset, from, part);
      if (outcome != Outcome::Done) return outcome;
      from += part;
      size -= part;
      offset += part;
    }
    if (size == 0) return Outcome::Done;
    offset -= runSize;
  }
  return Outcome::Done;
}

}  // namespace

Outcome WriteTables(const TableContents& contents, GatheringFile& file, std::uint64_t* fileSize) {
  TableWriter writer(contents, file);
  *fileSize = writer.Size();
  return writer.Write();
}
