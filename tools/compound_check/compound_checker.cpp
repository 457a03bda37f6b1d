#include "tools/compound_check/compound_checker.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <istream>
#include <sstream>

#include "tools/compound_check/compound_names.h"

namespace compound {
namespace {

// The file in the order in which it is checked:
//   header     512 bytes, in version 4 followed by zeros to 4096
//   DIFAT      109 sector numbers in the header, then a chain of sectors
//   FAT        one 32-bit word for each sector that follows the header
//   directory  a chain of sectors of 128-byte entries, entry 0 the root
//   mini FAT   the same for the 64-byte pieces of the mini stream, which is the root's stream
//   trees      the entries of a storage, a red-black tree in the order of names
enum SectorWord : std::uint32_t {
  MaxSector = 0xFFFFFFFA,
  DifatSector = 0xFFFFFFFC,
  FatSector = 0xFFFFFFFD,
  EndOfChain = 0xFFFFFFFE,
  Free = 0xFFFFFFFF,
  NoEntry = 0xFFFFFFFF,
};

constexpr std::uint64_t MiniSectorSize = 64;
constexpr std::size_t EntrySize = 128;
constexpr std::uint32_t HeaderDifat = 109;

std::uint64_t Number(std::string_view bytes, std::size_t offset, int width) {
  std::uint64_t value = 0;
  for (int i = width - 1; i >= 0; --i) {
    value = value << 8 | static_cast<std::uint8_t>(bytes[offset + static_cast<std::size_t>(i)]);
  }
  return value;
}

std::uint32_t Word(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(Number(bytes, offset, 4));
}

std::uint64_t CeilDivide(std::uint64_t size, std::uint64_t unit) {
  return size / unit + (size % unit != 0 ? 1 : 0);
}

bool ReadBytes(std::istream& file, std::uint64_t offset, std::size_t length, std::string& bytes) {
  bytes.assign(length, '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(offset));
  file.read(bytes.data(), static_cast<std::streamsize>(length));
  return file.good();
}

/// A table of sectors, FAT or mini FAT: the successor and the owner of each.
struct SectorTable {
  std::string name;
  std::uint64_t count = 0;  // sectors that exist; the table may be longer
  std::vector<std::uint32_t> next;
  std::vector<std::uint32_t> owner;  // index into the owners' names; 0 is nobody
};

/// A directory entry as it stands in the file.
struct RawEntry {
  std::u16string name;
  std::uint8_t type = 0;
  std::uint8_t color = 0;
  std::uint32_t left = 0, right = 0, child = 0, start = 0;
  bool reached = false;
  Entry entry;
};

class Checker {
 public:
  Checker(std::istream& input, const Parameters& given, Findings& result)
      : file(input), parameters(given), findings(result) {}

  void Run() {
    if (!CheckHeader()) return;
    ReadDifat();
    ReadFat();
    CheckRangeLock();
    ReadDirectory();
    if (entries.empty()) return;
    CheckRoot();
    ReadMiniFat();
    CheckTrees();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (entries[i].type != Unused && !entries[i].reached) Complain("reachable", Label(i));
    }
    if (pathUnits > MaxPathUnits) Complain("paths: too long to list, code units", pathUnits);
    CheckLeaks(fat);
    CheckLeaks(miniFat);
  }

 private:
  // --- Reporting ---

  template <typename... Parts>
  void Complain(const Parts&... parts) {
    if (findings.complaints.size() >= MaxComplaints) return;
    std::ostringstream text;
    text << std::hex << std::showbase;
    ((text << parts << ' '), ...);
    findings.complaints.push_back(text.str());
    findings.complaints.back().pop_back();
  }

  /// One comparison: `where` and `what` name the field.
  bool Expect(std::string_view what, std::string_view where, std::uint64_t expected,
              std::uint64_t found) {
    if (expected != found) Complain(where, what, "expected", expected, "found", found);
    return expected == found;
  }

  bool Require(bool holds, std::string_view what, std::string_view where, std::uint64_t found) {
    if (!holds) Complain(where, what, "found", found);
    return holds;
  }

  std::string Label(std::size_t index) const {
    return "entry " + std::to_string(index) + " \"" + Utf8(entries[index].name) + "\":";
  }

  // --- Header, DIFAT, FAT ---

  bool CheckHeader() {
    file.clear();
    file.seekg(0, std::ios::end);
    const std::streamoff end = file.tellg();
    if (end < 512 || !ReadBytes(file, 0, 512, header)) {
      Complain("header: file length expected 0x200 or more, found", end);
      return false;
    }
    major = static_cast<std::uint32_t>(Number(header, 26, 2));
    sectorSize = major == 3 ? 512 : 4096;
    // clang-format off
    const struct { std::string_view what; std::size_t offset; int width; std::uint64_t expected; }
        fields[] = {
            {"signature", 0, 8, 0xE11AB1A1E011CFD0},   {"class id", 8, 8, 0},
            {"class id", 16, 8, 0},                    {"minor version", 24, 2, 0x3E},
            {"major version", 26, 2, major == 3 ? 3U : 4U},
            {"byte order", 28, 2, 0xFFFE},             {"sector shift", 30, 2, major == 3 ? 9U : 12U},
            {"mini sector shift", 32, 2, 6},           {"reserved", 34, 6, 0},
            {"transaction signature", 52, 4, 0},       {"cutoff", 56, 4, parameters.cutoff},
        };
    // clang-format on
    bool readable = true;
    for (const auto& field : fields) {
      const bool fits =
          Expect(field.what, "header:", field.expected, Number(header, field.offset, field.width));
      readable = readable && (fits || (field.offset != 0 && field.offset != 26));
    }
    const std::uint64_t length = static_cast<std::uint64_t>(end);
    Expect("whole sectors, bytes over", "file length:", 0, length % sectorSize);
    fat.name = "sector";
    fat.count = CeilDivide(length, sectorSize) - 1;
    std::string rest;
    if (sectorSize > 512 && length >= sectorSize && ReadBytes(file, 512, sectorSize - 512, rest)) {
      Require(rest.find_first_not_of('\0') == rest.npos, "zeros after 0x200", "header:", 1);
    }
    return readable;
  }

  bool ReadSector(std::uint64_t sector, std::string& bytes) {
    return sector < fat.count && ReadBytes(file, (sector + 1) * sectorSize, sectorSize, bytes);
  }

  /// Enters an owner's name; its index marks the sectors that it owns.
  std::uint32_t NewOwner(const std::string& name) {
    owners.push_back(name);
    return static_cast<std::uint32_t>(owners.size() - 1);
  }

  bool Own(SectorTable& table, std::uint32_t sector, std::uint32_t owner) {
    if (sector >= table.count || sector >= table.owner.size()) {
      Complain(owners[owner], table.name, sector, "expected one below", table.count);
      return false;
    }
    if (table.owner[sector] != 0) {
      Complain(owners[owner], table.name, sector, "expected unowned, found owner",
               owners[table.owner[sector]]);
      return false;
    }
    table.owner[sector] = owner;
    return true;
  }

  /// Collects the numbers of the FAT's sectors; the table of owners exists before the FAT does.
  void ReadDifat() {
    fat.owner.assign(fat.count, 0);
    const std::uint32_t difatOwner = NewOwner("DIFAT:");
    const std::uint32_t fatOwner = NewOwner("FAT:");
    const std::size_t perSector = sectorSize / 4 - 1;
    for (std::size_t i = 0; i < HeaderDifat; ++i) difat.push_back(Word(header, 76 + 4 * i));
    std::uint32_t links = 0;
    std::uint32_t sector = Word(header, 68);
    std::string bytes;
    for (; sector <= MaxSector && Own(fat, sector, difatOwner); ++links) {
      if (!ReadSector(sector, bytes)) break;
      difatSectors.push_back(sector);
      for (std::size_t i = 0; i < perSector; ++i) difat.push_back(Word(bytes, 4 * i));
      sector = Word(bytes, 4 * perSector);
    }
    Expect("end of chain", "DIFAT:", EndOfChain, sector);
    Expect("DIFAT sectors", "header:", links, Word(header, 72));
    const std::uint32_t fatSectors = Word(header, 44);
    const std::uint64_t beyond = fatSectors > HeaderDifat ? fatSectors - HeaderDifat : 0;
    Expect("DIFAT sectors needed", "DIFAT:", CeilDivide(beyond, perSector), links);
    for (std::size_t i = 0; i < difat.size(); ++i) {
      if (i >= fatSectors) Expect("unused word", "DIFAT:", Free, difat[i]);
    }
    difat.resize(std::min<std::size_t>(difat.size(), fatSectors));
    for (std::uint32_t& number : difat) {
      if (!Own(fat, number, fatOwner)) number = Free;
    }
  }

  void ReadFat() {
    std::string bytes;
    for (const std::uint32_t sector : difat) {
      const bool read = ReadSector(sector, bytes);
      // A file may name any number of sectors that are not there: they take no memory.
      if (!read && fat.next.size() >= fat.count) continue;
      for (std::size_t i = 0; i < sectorSize / 4; ++i) {
        fat.next.push_back(read ? Word(bytes, 4 * i) : std::uint32_t{Free});
      }
    }
    Require(fat.next.size() >= fat.count, "covers the file, words", "FAT:", fat.next.size());
    fat.next.resize(std::max<std::size_t>(fat.next.size(), fat.count), Free);
    for (const std::uint32_t sector : difat) {
      if (sector != Free) Expect("mark of a FAT sector", "FAT:", FatSector, fat.next[sector]);
    }
    for (const std::uint32_t sector : difatSectors) {
      Expect("mark of a DIFAT sector", "FAT:", DifatSector, fat.next[sector]);
    }
  }

  void CheckRangeLock() {
    if (major == 3 && parameters.lockOffset == Parameters().lockOffset) return;
    const std::uint64_t sector = parameters.lockOffset / sectorSize - 1;
    if (sector >= fat.count) return;
    if (Own(fat, static_cast<std::uint32_t>(sector), NewOwner("range lock:"))) {
      Expect("mark", "range lock:", EndOfChain, fat.next[sector]);
    }
  }

  // --- Chains ---

  /// Walks a chain and owns its sectors; a crossing or a loop meets an owned sector and ends it.
  std::vector<std::uint32_t> Chain(SectorTable& table, std::uint32_t start,
                                   const std::string& name) {
    std::vector<std::uint32_t> chain;
    const std::uint32_t owner = NewOwner(name);
    std::uint32_t sector = start;
    while (sector != EndOfChain && Own(table, sector, owner)) {
      chain.push_back(sector);
      sector = table.next[sector];
    }
    return chain;
  }

  void CheckLeaks(const SectorTable& table) {
    for (std::size_t i = 0; i < table.next.size(); ++i) {
      if (i < table.count && table.owner[i] != 0) continue;
      if (table.next[i] == Free) continue;
      Complain(table.name, i, i < table.count ? "without owner" : "beyond the end", "expected",
               std::uint32_t{Free}, "found", table.next[i]);
    }
  }

  std::vector<std::string> ReadChain(std::uint32_t start, const std::string& name) {
    std::vector<std::string> sectors;
    for (const std::uint32_t sector : Chain(fat, start, name)) {
      sectors.emplace_back();
      if (!ReadSector(sector, sectors.back())) sectors.back().assign(sectorSize, '\0');
    }
    return sectors;
  }

  // --- Directory ---

  void ReadDirectory() {
    const std::vector<std::string> sectors = ReadChain(Word(header, 48), "directory:");
    Expect("directory sectors", "header:", major == 3 ? 0 : sectors.size(), Word(header, 40));
    Require(!sectors.empty(), "sectors", "directory:", 0);
    entries.reserve(sectors.size() * sectorSize / EntrySize);
    for (const std::string_view sector : sectors) {
      for (std::size_t i = 0; i < sectorSize; i += EntrySize) {
        ReadEntry(sector.substr(i, EntrySize));
      }
    }
  }

  void ReadEntry(std::string_view bytes) {
    RawEntry raw;
    raw.type = static_cast<std::uint8_t>(bytes[66]);
    raw.color = static_cast<std::uint8_t>(bytes[67]);
    raw.left = Word(bytes, 68);
    raw.right = Word(bytes, 72);
    raw.child = Word(bytes, 76);
    raw.start = Word(bytes, 116);
    raw.entry.type = static_cast<EntryType>(raw.type);
    for (std::size_t i = 0; i < 16; ++i) {
      raw.entry.classId[i] = static_cast<std::uint8_t>(bytes[80 + i]);
    }
    raw.entry.stateBits = Word(bytes, 96);
    raw.entry.created = Number(bytes, 100, 8);
    raw.entry.modified = Number(bytes, 108, 8);
    raw.entry.size = Number(bytes, 120, 8);
    entries.push_back(std::move(raw));
    const std::size_t index = entries.size() - 1;
    if (entries[index].type == Unused) return CheckUnused(index, bytes);
    ReadName(index, bytes);
    CheckFields(index);
  }

  void CheckUnused(std::size_t index, std::string_view bytes) {
    std::string empty(EntrySize, '\0');
    std::fill_n(empty.begin() + 68, 12, '\xFF');
    const auto [wanted, found] = std::mismatch(empty.begin(), empty.end(), bytes.begin());
    if (wanted == empty.end()) return;
    Complain(Label(index), "unused, byte at", found - bytes.begin(), "expected",
             static_cast<std::uint8_t>(*wanted) + 0, "found",
             static_cast<std::uint8_t>(*found) + 0);
  }

  void ReadName(std::size_t index, std::string_view bytes) {
    const std::uint64_t length = Number(bytes, 64, 2);
    const bool fits = length >= 4 && length <= 64 && length % 2 == 0;
    const std::size_t units = fits ? length / 2 - 1 : 31;
    for (std::size_t i = 0; i < 32; ++i) {
      const char16_t unit = static_cast<char16_t>(Number(bytes, 2 * i, 2));
      if (i < units) entries[index].name += unit;
      if (i >= units) Expect("name padding", Label(index), 0, unit);
    }
    Require(fits, "name length", Label(index), length);
    for (const char16_t unit : entries[index].name) {
      const bool forbidden = std::u16string_view(u"/\\:!").find(unit) != std::u16string_view::npos;
      Require(!forbidden && unit != 0, "character of the name", Label(index), unit);
    }
  }

  void CheckFields(std::size_t index) {
    const RawEntry& raw = entries[index];
    const std::string label = Label(index);
    const bool known = raw.type == Storage || raw.type == Stream || raw.type == Root;
    Require(known && (raw.type == Root) == (index == 0), "type", label, raw.type);
    Require(raw.color <= 1, "color", label, raw.color);
    if (raw.type == Stream) {
      for (const std::uint8_t byte : raw.entry.classId) Expect("class id", label, 0, byte);
      Expect("child", label, NoEntry, raw.child);
      Expect("state bits", label, 0, raw.entry.stateBits);
      Expect("modified", label, 0, raw.entry.modified);
    }
    if (raw.type != Storage) Expect("created", label, 0, raw.entry.created);
    if (raw.type == Storage) {
      Expect("start", label, 0, raw.start);
      Expect("size", label, 0, raw.entry.size);
    }
    if (major == 3) Require(raw.entry.size <= 0x80000000U, "size", label, raw.entry.size);
  }

  void CheckRoot() {
    const RawEntry& root = entries[0];
    Require(root.name == u"Root Entry", "name of the root", Label(0), root.name.size());
    Expect("left", Label(0), NoEntry, root.left);
    Expect("right", Label(0), NoEntry, root.right);
    Expect("color", Label(0), 1, root.color);
    Expect("mini sectors whole, bytes over", Label(0), 0, root.entry.size % MiniSectorSize);
    miniStream = Chain(fat, root.start, "mini stream:");
    Expect("sectors", "mini stream:", CeilDivide(root.entry.size, sectorSize), miniStream.size());
  }

  void ReadMiniFat() {
    miniFat.name = "mini sector";
    miniFat.count = std::min<std::uint64_t>(entries[0].entry.size / MiniSectorSize,
                                            miniStream.size() * (sectorSize / MiniSectorSize));
    const std::vector<std::string> sectors = ReadChain(Word(header, 60), "mini FAT:");
    Expect("mini FAT sectors", "header:", sectors.size(), Word(header, 64));
    for (const std::string& bytes : sectors) {
      for (std::size_t i = 0; i < sectorSize; i += 4) miniFat.next.push_back(Word(bytes, i));
    }
    Require(miniFat.next.size() >= miniFat.count, "covers the mini stream, words",
            "mini FAT:", miniFat.next.size());
    miniFat.count = std::min<std::uint64_t>(miniFat.count, miniFat.next.size());
    miniFat.owner.assign(miniFat.count, 0);
  }

  // --- Streams ---

  void CheckStream(std::size_t index) {
    Entry& entry = entries[index].entry;
    const bool mini = entry.size < parameters.cutoff;
    SectorTable& table = mini ? miniFat : fat;
    const std::uint64_t unit = mini ? MiniSectorSize : sectorSize;
    const std::vector<std::uint32_t> chain = Chain(table, entries[index].start, Label(index));
    Expect(mini ? "mini sectors" : "sectors", Label(index), CeilDivide(entry.size, unit),
           chain.size());
    std::uint64_t left = entry.size;
    for (const std::uint32_t sector : chain) {
      const std::uint64_t length = std::min(left, unit);
      const std::uint64_t offset = mini ? MiniOffset(sector) : (sector + 1ULL) * sectorSize;
      left -= length;
      if (!entry.extents.empty() &&
          entry.extents.back().offset + entry.extents.back().length == offset) {
        entry.extents.back().length += length;
      } else if (length != 0) {
        entry.extents.push_back({offset, length});
      }
    }
  }

  std::uint64_t MiniOffset(std::uint32_t sector) const {
    const std::uint64_t offset = sector * MiniSectorSize;
    return (miniStream[offset / sectorSize] + 1ULL) * sectorSize + offset % sectorSize;
  }

  // --- Trees ---

  /// Storages wait in a list, so that their nesting costs no depth of calls.
  void CheckTrees() {
    entries[0].reached = true;
    Gather(0);
    std::vector<std::size_t> storages{0};
    for (std::size_t next = 0; next < storages.size(); ++next) {
      const std::size_t storage = storages[next];
      std::vector<std::size_t> members;
      std::size_t depth = 0;
      const std::uint32_t top = entries[storage].child;
      if (top < entries.size()) Expect("color of the top", Label(storage), 1, entries[top].color);
      Walk(top, storage, 1, members, depth);
      const std::size_t limit = 2 * static_cast<std::size_t>(std::bit_width(members.size()));
      Require(depth <= limit, "depth of its tree", Label(storage), depth);
      CheckOrder(members);
      for (const std::size_t member : members) {
        entries[member].entry.path = PathOf(storage, member);
        pathUnits += entries[member].entry.path.size();
        if (entries[member].type == Stream) CheckStream(member);
        if (entries[member].type == Storage) storages.push_back(member);
        Gather(member);
      }
    }
  }

  void Gather(std::size_t index) { findings.entries.push_back(entries[index].entry); }

  std::u16string PathOf(std::size_t storage, std::size_t member) const {
    if (storage == 0 || pathUnits > MaxPathUnits) return entries[member].name;
    return entries[storage].entry.path + u"/" + entries[member].name;
  }

  /// Collects the members in order; returns the number of black entries on each way down.
  std::size_t Walk(std::uint32_t index, std::size_t storage, std::size_t level,
                   std::vector<std::size_t>& members, std::size_t& depth) {
    if (index == NoEntry) return 1;
    if (!Require(index < entries.size(), "link to an entry", Label(storage), index)) return 1;
    RawEntry& raw = entries[index];
    const std::string label = Label(index);
    if (!Require(!raw.reached, "reached a second time from", label, storage)) return 1;
    if (!Require(level <= 64, "level in its tree", label, level)) return 1;
    Require(raw.type != Unused, "linked although unused", label, 0);
    raw.reached = true;
    depth = std::max(depth, level);
    for (const std::uint32_t link : {raw.left, raw.right}) {
      if (raw.color == 0 && link < entries.size()) {
        Expect("color below red", Label(link), 1, entries[link].color);
      }
    }
    const std::size_t left = Walk(raw.left, storage, level + 1, members, depth);
    members.push_back(index);
    const std::size_t right = Walk(raw.right, storage, level + 1, members, depth);
    Expect("black height, left and right", label, left, right);
    return left + (raw.color == 1 ? 1 : 0);
  }

  void CheckOrder(const std::vector<std::size_t>& members) {
    for (std::size_t i = 1; i < members.size(); ++i) {
      const RawEntry& before = entries[members[i - 1]];
      if (CompareNames(before.name, entries[members[i]].name) >= 0) {
        Complain(Label(members[i]), "order: expected before", Label(members[i - 1]));
      }
    }
  }

  static constexpr std::size_t MaxComplaints = 50;
  // Of all paths together: without a limit, nested storages take the square of the file's size.
  static constexpr std::size_t MaxPathUnits = 1 << 26;

  std::istream& file;
  const Parameters& parameters;
  Findings& findings;
  std::string header;
  std::uint32_t major = 0;
  std::size_t sectorSize = 0;
  std::vector<std::string> owners{"nobody"};
  std::vector<std::uint32_t> difat, difatSectors, miniStream;
  SectorTable fat, miniFat;
  std::vector<RawEntry> entries;
  std::size_t pathUnits = 0;
};

}  // namespace

std::string Findings::Text() const {
  std::string text;
  for (const std::string& complaint : complaints) text += complaint + "\n";
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
  if (!file) return {{fileName + ": expected a readable file, found none"}, {}};
  return Check(file, parameters);
}

std::string Contents(std::istream& file, const Entry& entry) {
  std::string contents;
  std::string bytes;
  for (const Extent& extent : entry.extents) {
    ReadBytes(file, extent.offset, extent.length, bytes);
    contents += bytes;
  }
  return contents;
}

std::uint64_t Hash(std::istream& file, const Entry& entry) {
  constexpr std::uint64_t pieceSize = 1 << 16;
  std::uint64_t hash = 0xCBF29CE484222325;
  std::string bytes;
  for (const Extent& extent : entry.extents) {
    for (std::uint64_t done = 0; done < extent.length; done += bytes.size()) {
      const std::size_t length = std::min(pieceSize, extent.length - done);
      ReadBytes(file, extent.offset + done, length, bytes);
      for (const char byte : bytes) hash = (hash ^ static_cast<std::uint8_t>(byte)) * 0x100000001B3;
    }
  }
  return hash;
}

}  // namespace compound
