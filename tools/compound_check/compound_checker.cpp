#include "tools/compound_check/compound_checker.h"

#include <algorithm>
#include <fstream>
#include <istream>

#include "tools/compound_check/compound_bytes.h"
#include "tools/compound_check/directory_entry.h"
#include "tools/compound_check/sector_file.h"
#include "tools/compound_check/storage_tree.h"

namespace compound {
namespace {

constexpr std::uint64_t MiniSectorSize = 64;
// Of all paths together: without a limit, nested storages take the square of the file's size.
constexpr std::size_t MaxPathUnits = 1 << 26;

/// What the sectors hold, in the order in which it is checked:
///   directory  a chain of sectors of 128-byte entries, entry 0 the root
///   mini FAT   a table for the 64-byte pieces of the mini stream, which is the root's stream
///   trees      the entries of a storage, a red-black tree in the order of names
class Checker {
 public:
  Checker(std::istream& input, const Parameters& given, Findings& result)
      : parameters(given), findings(result), sectors(input, given, complaints) {}

  void Run() {
    if (sectors.Read()) CheckContents();
    findings.complaints = complaints.Texts();
  }

 private:
  void CheckContents() {
    ReadDirectory();
    if (entries.empty()) return;
    CheckRoot();
    ReadMiniFat();
    CheckTrees();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (entries[i].type != Unused && !entries[i].reached) complaints.Add("reachable", Label(i));
    }
    if (pathUnits > MaxPathUnits) {
      complaints.Add("paths: too long to list, code units", pathUnits);
    }
    sectors.fat.CheckLeaks();
    miniFat.CheckLeaks();
  }

  std::string Label(std::size_t index) const { return EntryLabel(index, entries[index]); }

  void ReadDirectory() {
    const auto parts = sectors.ReadChain(sectors.HeaderWord(48), "directory:");
    complaints.Expect("directory sectors", "header:", sectors.IsVersion3() ? 0 : parts.size(),
                      sectors.HeaderWord(40));
    complaints.Require(!parts.empty(), "sectors", "directory:", 0);
    entries.reserve(parts.size() * sectors.SectorSize() / EntrySize);
    for (const std::string_view part : parts) {
      for (std::size_t i = 0; i < part.size(); i += EntrySize) {
        const std::string_view bytes = part.substr(i, EntrySize);
        entries.push_back(ParseEntry(bytes));
        CheckEntry(entries.size() - 1, entries.back(), bytes, sectors.IsVersion3(), complaints);
      }
    }
  }

  void CheckRoot() {
    const RawEntry& root = entries[0];
    complaints.Require(root.name == u"Root Entry", "name of the root", Label(0), root.name.size());
    complaints.Expect("left", Label(0), NoEntry, root.left);
    complaints.Expect("right", Label(0), NoEntry, root.right);
    complaints.Expect("color", Label(0), Black, root.color);
    complaints.Expect("mini sectors whole, bytes over", Label(0), 0,
                      root.entry.size % MiniSectorSize);
    miniStream = sectors.fat.Chain(root.start, "mini stream:");
    complaints.Expect("sectors", "mini stream:", CeilDivide(root.entry.size, sectors.SectorSize()),
                      miniStream.size());
  }

  void ReadMiniFat() {
    const auto parts = sectors.ReadChain(sectors.HeaderWord(60), "mini FAT:");
    complaints.Expect("mini FAT sectors", "header:", parts.size(), sectors.HeaderWord(64));
    for (const std::string& part : parts) {
      for (std::size_t i = 0; i < part.size(); i += 4) miniFat.next.push_back(Word(part, i));
    }
    const std::uint64_t words = miniFat.next.size();
    const std::uint64_t room = miniStream.size() * (sectors.SectorSize() / MiniSectorSize);
    const std::uint64_t count = std::min(entries[0].entry.size / MiniSectorSize, room);
    complaints.Require(words >= count, "covers the mini stream, words", "mini FAT:", words);
    miniFat.SetCount(std::min(count, words));
  }

  /// Storages wait in a list, so that their nesting costs no depth of calls.
  void CheckTrees() {
    entries[0].reached = true;
    findings.entries.push_back(entries[0].entry);
    std::vector<std::size_t> storages{0};
    for (std::size_t next = 0; next < storages.size(); ++next) {
      const std::size_t storage = storages[next];
      for (const std::size_t member : CheckTree(entries, storage, complaints)) {
        entries[member].entry.path = PathOf(storage, member);
        pathUnits += entries[member].entry.path.size();
        if (entries[member].type == Stream) CheckStream(member);
        if (entries[member].type == Storage) storages.push_back(member);
        findings.entries.push_back(entries[member].entry);
      }
    }
  }

  std::u16string PathOf(std::size_t storage, std::size_t member) const {
    if (storage == 0 || pathUnits > MaxPathUnits) return entries[member].name;
    return entries[storage].entry.path + u"/" + entries[member].name;
  }

  void CheckStream(std::size_t index) {
    Entry& entry = entries[index].entry;
    const bool mini = entry.size < parameters.cutoff;
    SectorTable& table = mini ? miniFat : sectors.fat;
    const std::uint64_t unit = mini ? MiniSectorSize : sectors.SectorSize();
    const auto chain = table.Chain(entries[index].start, Label(index));
    complaints.Expect(mini ? "mini sectors" : "sectors", Label(index), CeilDivide(entry.size, unit),
                      chain.size());
    std::uint64_t left = entry.size;
    for (const std::uint32_t sector : chain) {
      const std::uint64_t length = std::min(left, unit);
      AddExtent(entry, mini ? MiniOffset(sector) : sectors.Offset(sector), length);
      left -= length;
    }
  }

  std::uint64_t MiniOffset(std::uint32_t sector) const {
    const std::uint64_t offset = sector * MiniSectorSize;
    const std::size_t sectorSize = sectors.SectorSize();
    const auto piece = static_cast<std::size_t>(offset / sectorSize);
    return sectors.Offset(miniStream[piece]) + offset % sectorSize;
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

  const Parameters& parameters;
  Findings& findings;
  Complaints complaints;
  SectorFile sectors;
  SectorTable miniFat{"mini sector", complaints};
  std::vector<std::uint32_t> miniStream;
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
      const std::uint64_t length = std::min(pieceSize, extent.length - done);
      ReadBytes(file, extent.offset + done, length, bytes);
      for (const char byte : bytes) hash = (hash ^ static_cast<std::uint8_t>(byte)) * 0x100000001B3;
    }
  }
  return hash;
}

}  // namespace compound
