#include "compound/tables.h"

#include <algorithm>
#include <cstring>

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

}  // namespace

CompoundWriter::CompoundWriter(CompoundDocument& writtenDocument)
    : document_(writtenDocument),
      counts_(CountTables(document_.parameters_, document_.space_.End(),
                          document_.directory_.Count(), document_.miniSpace_.End())),
      next_(document_.space_.End()) {}

std::uint64_t CompoundWriter::FileSize() const {
  return (counts_.total + 1) * document_.parameters_.sectorSize;
}

HRESULT CompoundWriter::Write() {
  directoryRuns_ = Place(counts_.directory);
  miniFatRuns_ = Place(counts_.miniFat);
  fatRuns_ = Place(counts_.fat);
  difatRuns_ = Place(counts_.difat);
  fatSectors_ = SectorsOf(fatRuns_);
  miniFat_.assign(std::size_t{counts_.miniFat} * document_.parameters_.sectorSize / 4, MarkFree);
  for (const auto step :
       {&CompoundWriter::WriteDirectory, &CompoundWriter::WriteMiniFat, &CompoundWriter::WriteFat,
        &CompoundWriter::WriteDifat, &CompoundWriter::WriteHeader}) {
    const HRESULT result = (this->*step)();
    if (FAILED(result)) return result;
  }
  return S_OK;
}

/// The next `count` sectors, around the locked one.
std::vector<SectorRun> CompoundWriter::Place(std::uint32_t count) {
  const std::uint32_t locked = LockedSector(document_.parameters_);
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

void CompoundWriter::AddChain(const SectorChain& chain) {
  const std::uint32_t runs = chain.RunCount();
  for (std::uint32_t i = 0; i < runs; ++i) {
    chains_.push_back({chain.Run(i), i + 1 < runs ? chain.Run(i + 1).start : MarkEndOfChain});
  }
}

void CompoundWriter::AddChain(const std::vector<SectorRun>& runs) {
  for (std::size_t i = 0; i < runs.size(); ++i) {
    chains_.push_back({runs[i], i + 1 < runs.size() ? runs[i + 1].start : MarkEndOfChain});
  }
}

void CompoundWriter::AddMarked(const std::vector<SectorRun>& runs, std::uint32_t mark) {
  for (const SectorRun& run : runs) chains_.push_back({run, mark, mark});
}

void CompoundWriter::AddMiniChain(const SectorChain& chain) {
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

HRESULT CompoundWriter::WriteDirectory() {
  const CompoundEntry& root = *document_.directory_.Root();
  HRESULT result = WriteRecord(root, {0, NoStream, NoStream, ColorBlack}, 0);
  std::vector<CompoundEntry*> level;
  if (SUCCEEDED(result)) result = WriteBlock(root, &level);
  while (SUCCEEDED(result) && !level.empty()) {
    std::vector<CompoundEntry*> deeper;
    for (const CompoundEntry* storage : level) {
      result = WriteBlock(*storage, &deeper);
      if (FAILED(result)) return result;
    }
    level.swap(deeper);
  }
  return FAILED(result) ? result : PadDirectory();
}

/// Writes the children of a storage; appends those that have children themselves to `storages`.
HRESULT CompoundWriter::WriteBlock(const CompoundEntry& storage,
                                   std::vector<CompoundEntry*>* storages) {
  const std::vector<CompoundEntry*> children = SortedChildren(storage);
  const auto count = static_cast<std::uint32_t>(children.size());
  const std::uint32_t base = writtenEntries_;
  HRESULT result = S_OK;
  VisitTree(0, count, FullLevels(count), [&](const TreeNode& node) {
    CompoundEntry* entry = children[node.position];
    if (SUCCEEDED(result)) result = WriteRecord(*entry, node, base);
    if (!entry->IsStream() && entry->storage->childCount > 0) storages->push_back(entry);
  });
  return result;
}

HRESULT CompoundWriter::WriteRecord(const CompoundEntry& entry, const TreeNode& node,
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
    if (document_.IsMini(entry.size)) {
      AddMiniChain(entry.chain);
    } else {
      AddChain(entry.chain);
    }
  } else {
    const StorageInfo& info = *entry.storage;
    record.type = isRoot ? EntryRoot : EntryStorage;
    record.clsid = info.clsid;
    record.stateBits = info.stateBits;
    record.created = isRoot ? 0 : info.created;
    record.modified = info.modified;
    if (info.childCount > 0) record.child = nextBlock_ + TreeRoot(0, info.childCount);
    nextBlock_ += info.childCount;
  }
  if (isRoot) {
    record.size = std::uint64_t{document_.miniSpace_.End()} * MiniSectorSize;
    record.start =
        document_.miniStream_.Count() == 0 ? MarkEndOfChain : document_.miniStream_.Start();
    AddChain(document_.miniStream_);
  }
  const std::uint64_t offset = std::uint64_t{writtenEntries_++} * sizeof record;
  return Put(directoryRuns_, offset, &record, sizeof record);
}

HRESULT CompoundWriter::PadDirectory() {
  CompoundEntryRecord unused = {};
  unused.left = unused.right = unused.child = NoStream;
  const std::uint32_t perSector =
      static_cast<std::uint32_t>(document_.parameters_.sectorSize / sizeof unused);
  for (; writtenEntries_ < counts_.directory * perSector; ++writtenEntries_) {
    const std::uint64_t offset = std::uint64_t{writtenEntries_} * sizeof unused;
    const HRESULT result = Put(directoryRuns_, offset, &unused, sizeof unused);
    if (FAILED(result)) return result;
  }
  return S_OK;
}

HRESULT CompoundWriter::WriteMiniFat() {
  return Put(miniFatRuns_, 0, miniFat_.data(), miniFat_.size() * sizeof(std::uint32_t));
}

HRESULT CompoundWriter::WriteFat() {
  const std::uint32_t locked = LockedSector(document_.parameters_);
  AddChain(directoryRuns_);
  AddChain(miniFatRuns_);
  AddMarked(fatRuns_, MarkFat);
  AddMarked(difatRuns_, MarkDifat);
  if (locked < counts_.total) AddMarked({{locked, 1}}, MarkEndOfChain);
  std::sort(chains_.begin(), chains_.end(),
            [](const FatRun& a, const FatRun& b) { return a.run.start < b.run.start; });
  const std::uint32_t perSector = document_.parameters_.sectorSize / 4;
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
        marks[i - begin] = chain.everyMark != 0 ? chain.everyMark : following;
      }
      if (runEnd > end) break;  // goes on in the next sector of the FAT
    }
    const std::uint64_t offset = std::uint64_t{sector} * document_.parameters_.sectorSize;
    const HRESULT result = Put(fatRuns_, offset, marks.data(), document_.parameters_.sectorSize);
    if (FAILED(result)) return result;
  }
  return S_OK;
}

HRESULT CompoundWriter::WriteDifat() {
  const std::uint32_t perSector = document_.parameters_.sectorSize / 4;
  const std::vector<std::uint32_t> sectors = SectorsOf(difatRuns_);
  std::vector<std::uint32_t> marks(perSector);
  std::size_t from = HeaderDifatEntries;
  for (std::size_t i = 0; i < sectors.size(); ++i) {
    std::fill(marks.begin(), marks.end(), MarkFree);
    const std::size_t part = std::min<std::size_t>(perSector - 1, fatSectors_.size() - from);
    std::copy_n(&fatSectors_[from], part, marks.begin());
    from += part;
    marks.back() = i + 1 < sectors.size() ? sectors[i + 1] : MarkEndOfChain;
    const std::uint64_t offset = i * std::uint64_t{document_.parameters_.sectorSize};
    const HRESULT result = Put(difatRuns_, offset, marks.data(), document_.parameters_.sectorSize);
    if (FAILED(result)) return result;
  }
  return S_OK;
}

HRESULT CompoundWriter::WriteHeader() {
  const std::uint32_t sectorSize = document_.parameters_.sectorSize;
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
  header.miniCutoff = document_.parameters_.miniCutoff;
  header.miniFatStart = StartOf(miniFatRuns_);
  header.miniFatSectors = counts_.miniFat;
  header.difatStart = StartOf(difatRuns_);
  header.difatSectors = counts_.difat;
  for (std::size_t i = 0; i < HeaderDifatEntries; ++i) {
    header.difat[i] = i < fatSectors_.size() ? fatSectors_[i] : MarkFree;
  }
  std::vector<std::byte> sector(sectorSize);
  std::memcpy(sector.data(), &header, sizeof header);
  return document_.file_.Write(0, sector.data(), sector.size());
}

/// Writes into a table that lies in `runs`.
HRESULT CompoundWriter::Put(const std::vector<SectorRun>& runs, std::uint64_t offset,
                            const void* data, std::size_t size) {
  auto* from = static_cast<const std::byte*>(data);
  for (const SectorRun& run : runs) {
    const std::uint64_t runSize = std::uint64_t{run.count} * document_.parameters_.sectorSize;
    if (offset < runSize) {
      const std::size_t part = std::min<std::uint64_t>(size, runSize - offset);
      const HRESULT result =
          document_.file_.Write(document_.OffsetOf(run.start) + offset, from, part);
      if (FAILED(result)) return result;
      from += part;
      size -= part;
      offset += part;
    }
    if (size == 0) return S_OK;
    offset -= runSize;
  }
  return S_OK;
}
