#include "tools/compound_check/compound_checker.h"

#include <algorithm>
#include <fstream>
#include <istream>

#include "tools/compound_check/compound_bytes.h"
#include "tools/compound_check/compound_names.h"
#include "tools/compound_check/directory_entry.h"
#include "tools/compound_check/sector_file.h"
#include "tools/compound_check/storage_tree.h"

namespace compound {
namespace {

constexpr std::uint64_t MiniSectorSize = 64;
// Where the header's fields stand.
constexpr std::size_t DirectorySectors = 40, FirstDirectorySector = 48, FirstMiniFatSector = 60,
                      MiniFatSectors = 64;
constexpr std::size_t StartField = 116;  // of a directory entry
// Of all paths together: without a limit, nested storages take the square of the file's size.
constexpr std::size_t MaxPathUnits = 1 << 24;
constexpr std::size_t PathUnitsPerEntry = 64;

/// What the sectors hold, in the order in which it is checked:
///   directory  a chain of sectors of 128-byte entries, entry 0 the root
///   mini FAT   a table for the 64-byte pieces of the mini stream, which is the root's stream
///   trees      the entries of a storage, a red-black tree in the order of names
class Checker {
 public:
  Checker(std::istream& input, const Parameters& given, Findings& result)
      : parameters_(given), findings_(result), sectors_(input, given, complaints_) {}

  void Run() {
    if (sectors_.Read()) CheckContents();
    findings_.complaints = complaints_.Sorted();
  }

 private:
  void CheckContents() {
    ReadDirectory();
    if (entries_.empty()) return complaints_.Damaged("directory", "has no entries");
    CheckRoot();
    ReadMiniFat();
    CheckStorages();
    CheckLeftovers();
    if (ArePathsTooLong()) complaints_.Unusual("directory", "paths are too long to list");
    sectors_.CheckRangeLock();
    sectors_.fat.CheckLeaks();
    miniFat_.CheckLeaks();
    Report();
  }

  std::string Label(std::size_t index) const {
    return std::string("/").append(Printable(entries_[index].entry.path));
  }

  void ReadDirectory() {
    ChainBytes chain = sectors_.ReadChain(FirstDirectorySector, "directory");
    const std::size_t wanted = sectors_.IsVersion3() ? 0 : chain.places.size();
    CheckHeaderCount(DirectorySectors, wanted, "the number of directory sectors is wrong");
    directory_ = std::move(chain.bytes);
    for (std::size_t at = 0; at < directory_.size(); at += EntrySize) {
      entries_.push_back(ParseEntry(Bytes(entries_.size()), sectors_.IsVersion3()));
      const std::size_t inSector = at % sectors_.SectorSize();
      entries_.back().place = chain.places[at / sectors_.SectorSize()] + inSector;
    }
  }

  std::string_view Bytes(std::size_t index) const {
    return std::string_view{directory_}.substr(index * EntrySize, EntrySize);
  }

  void CheckHeaderCount(std::size_t field, std::uint64_t wanted, const char* what) {
    const std::uint32_t found = sectors_.HeaderWord(field);
    if (found != wanted) complaints_.Unusual("header", what, {field, wanted, found});
  }

  void CheckRoot() {
    RawEntry& root = entries_[0];
    root.reached = true;
    if (root.type != Root) {
      complaints_.Damaged("directory", "does not begin with a root", {root.place, Root, root.type});
      root.type = root.entry.type = Root;
    }
    CheckEntry(root, "/", Bytes(0), complaints_);
    if (root.entry.size % MiniSectorSize != 0) {
      complaints_.Unusual("mini stream", "ends within a small sector", {{}, {}, root.entry.size});
    }
    miniStreamOwner_ = sectors_.fat.NewOwner("mini stream");
    const std::uint64_t needed = CeilDivide(root.entry.size, sectors_.SectorSize());
    if (needed == 0 && root.start != EndOfChain) return CheckEmptyStart(root, "mini stream");
    miniStream_ =
        sectors_.fat.Chain({root.start, root.place + StartField}, miniStreamOwner_, needed);
    if (miniStream_.size() != needed) {
      complaints_.Unusual("mini stream", "its size is not that of its sectors",
                          {{}, needed, miniStream_.size()});
    }
  }

  void CheckEmptyStart(const RawEntry& raw, const std::string& label) {
    if (raw.start == EndOfChain) return;
    complaints_.Unusual(label, "is empty and has a first sector",
                        {raw.place + StartField, EndOfChain, raw.start});
  }

  void ReadMiniFat() {
    const ChainBytes chain = sectors_.ReadChain(FirstMiniFatSector, "mini FAT");
    CheckHeaderCount(MiniFatSectors, chain.places.size(),
                     "the number of mini FAT sectors is wrong");
    std::vector<std::uint32_t> words(sectors_.SectorSize() / 4);
    for (std::size_t sector = 0; sector < chain.places.size(); ++sector) {
      for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = Word(chain.bytes, sector * sectors_.SectorSize() + 4 * i);
      }
      miniFat_.Append(words, chain.places[sector]);
    }
    const std::uint64_t room = miniStream_.size() * (sectors_.SectorSize() / MiniSectorSize);
    const std::uint64_t count = std::min(CeilDivide(entries_[0].entry.size, MiniSectorSize), room);
    if (miniFat_.Words() < count) {
      complaints_.Unusual("mini FAT", "does not cover the mini stream",
                          {{}, count, miniFat_.Words()});
    }
    miniFat_.SetCount(std::min<std::uint64_t>(count, miniFat_.Words()));
  }

  /// Storages wait in a list, so that their nesting costs no depth of calls.
  void CheckStorages() {
    order_.push_back(0);
    std::vector<std::size_t> storages{0};
    for (std::size_t next = 0; next < storages.size(); ++next) {
      const std::size_t storage = storages[next];
      const auto members = WalkTree(entries_, storage, Label(storage), complaints_);
      CheckTree(entries_, storage, members, Label(storage), complaints_);
      for (const std::size_t member : members) {
        RawEntry& raw = entries_[member];
        raw.entry.path = PathOf(storage, member);
        pathUnits_ += raw.entry.path.size();
        CheckEntry(raw, Label(member), Bytes(member), complaints_);
        if (raw.type == Stream) CheckStream(member);
        if (raw.type == Storage) storages.push_back(member);
        order_.push_back(member);
      }
    }
  }

  bool ArePathsTooLong() const {
    return pathUnits_ > MaxPathUnits + PathUnitsPerEntry * entries_.size();
  }

  std::u16string PathOf(std::size_t storage, std::size_t member) const {
    if (storage == 0 || ArePathsTooLong()) return entries_[member].name;
    return (entries_[storage].entry.path + u'/').append(entries_[member].name);
  }

  void CheckStream(std::size_t index) {
    RawEntry& raw = entries_[index];
    Entry& entry = raw.entry;
    if (entry.size == 0) return CheckEmptyStart(raw, Label(index));
    const bool mini = entry.size < parameters_.cutoff;
    SectorTable& table = mini ? miniFat_ : sectors_.fat;
    const std::uint64_t unit = mini ? MiniSectorSize : sectors_.SectorSize();
    const std::uint64_t needed = CeilDivide(entry.size, unit);
    const std::uint32_t owner = table.NewOwner(Label(index));
    streams_.push_back({index, owner, mini});
    const auto chain = table.Chain({raw.start, raw.place + StartField}, owner, needed);
    if (chain.size() != needed) {
      table.Damage(owner,
                   "its size is " + std::to_string(entry.size) + " bytes, its sectors hold " +
                       std::to_string(chain.size() * unit),
                   {raw.place + StartField + 4});
    }
    std::uint64_t left = entry.size;
    for (const std::uint32_t sector : chain) {
      const std::uint64_t length = std::min(left, unit);
      AddExtent(entry, mini ? MiniOffset(sector) : sectors_.Offset(sector), length);
      left -= length;
    }
    for (const Extent& extent : entry.extents) {
      if (extent.offset + extent.length <= sectors_.FileLength()) continue;
      table.Damage(owner, "is cut off by the end of the file", {extent.offset});
      break;
    }
  }

  std::uint64_t MiniOffset(std::uint32_t sector) const {
    const std::uint64_t offset = sector * MiniSectorSize;
    const std::size_t sectorSize = sectors_.SectorSize();
    const auto piece = static_cast<std::size_t>(offset / sectorSize);
    return sectors_.Offset(miniStream_[piece]) + offset % sectorSize;
  }

  /// Neighbours in the stream that are neighbours in the file become one extent.
  static void AddExtent(Entry& entry, std::uint64_t offset, std::uint64_t length) {
    if (length == 0) return;
    if (!entry.extents.empty()) {
      Extent& last = entry.extents.back();
      if (last.offset + last.length == offset) {
        last.length += length;
        return;
      }
    }
    entry.extents.push_back({offset, length});
  }

  /// The entries that no tree holds.
  void CheckLeftovers() {
    std::vector<std::uint64_t> filled;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (entries_[i].type == Unused) {
        if (!IsEmptyEntry(Bytes(i))) filled.push_back(entries_[i].place);
      } else if (!entries_[i].reached) {
        complaints_.Damaged("directory", "no storage holds \"" + Printable(entries_[i].name) + "\"",
                            {entries_[i].place});
      }
    }
    if (filled.empty()) return;
    complaints_.Unusual("directory",
                        std::to_string(filled.size()) + " unused entries are not empty",
                        {filled.front()});
  }

  /// A stream may turn out to be damaged long after it was read, by one that crosses it.
  void Report() {
    for (const StreamOwner& stream : streams_) {
      const bool byItself = (stream.mini ? miniFat_ : sectors_.fat).IsDamaged(stream.owner);
      const bool byMiniStream = stream.mini && sectors_.fat.IsDamaged(miniStreamOwner_);
      if (byItself || byMiniStream) entries_[stream.index].entry.damaged = true;
    }
    for (const std::size_t index : order_) findings_.entries.push_back(entries_[index].entry);
  }

  struct StreamOwner {
    std::size_t index;    // of its entry
    std::uint32_t owner;  // in its table
    bool mini;
  };

  const Parameters& parameters_;
  Findings& findings_;
  Complaints complaints_;
  SectorFile sectors_;
  SectorTable miniFat_{"mini FAT", "small sector", complaints_};
  std::vector<std::uint32_t> miniStream_;
  std::uint32_t miniStreamOwner_ = 0;
  std::string directory_;
  std::vector<RawEntry> entries_;
  std::vector<std::size_t> order_;  // of the entries that were reached
  std::vector<StreamOwner> streams_;
  std::size_t pathUnits_ = 0;
};

}  // namespace

bool Findings::IsDamaged() const {
  return !complaints.empty() && complaints.front().grade == Grade::Damaged;
}

std::string Findings::Text() const {
  std::string text;
  for (const Complaint& complaint : complaints) {
    text += complaint.text + EvidenceText(complaint.evidence) + "\n";
  }
  return text;
}

const Entry* Findings::Find(std::u16string_view path) const {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&](const Entry& entry) { return entry.path == path; });
  return found == entries.end() ? nullptr : &*found;
}

Findings Check(std::istream& file, const Parameters& parameters) {
  Findings findings;
  Checker(file, parameters, findings).Run();
  return findings;
}

Findings CheckFile(const std::string& fileName, const Parameters& parameters) {
  std::ifstream file(fileName, std::ios::binary);
  if (!file) return {{{Grade::Damaged, fileName + ": cannot be read", {}}}, {}};
  return Check(file, parameters);
}

bool ReadStream(std::istream& file, const Entry& entry,
                const std::function<bool(std::string_view)>& take) {
  constexpr std::uint64_t PieceSize = 1 << 16;
  std::string bytes;
  for (const Extent& extent : entry.extents) {
    for (std::uint64_t done = 0; done < extent.length; done += bytes.size()) {
      const std::uint64_t length = std::min(PieceSize, extent.length - done);
      if (!ReadBytes(file, extent.offset + done, length, bytes) || !take(bytes)) return false;
    }
  }
  return true;
}

std::string Contents(std::istream& file, const Entry& entry) {
  std::string contents;
  ReadStream(file, entry, [&](std::string_view piece) {
    contents += piece;
    return true;
  });
  return contents;
}

}  // namespace compound
