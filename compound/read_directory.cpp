#include "compound/read_directory.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint32_t HighBits = 32;
constexpr std::size_t NameUnits = MaxNameUnits + 1;

int Compare(const CompoundName& a, const CompoundName& b) { return CompareNames(a, b); }

/// The format's order, and within what that holds for one name, the order of the units.
int CompareExactly(const CompoundName& a, const CompoundName& b) {
  const int difference = Compare(a, b);
  return difference != 0 ? difference : std::memcmp(a.units, b.units, sizeof a.units);
}

bool IsBefore(const ReadEntry& a, const ReadEntry& b) { return CompareExactly(a.name, b.name) < 0; }

/// Takes a name as it stands. Relaxed: it is to end with a zero that its length counts, and to hold
/// none of / \ : ! There are files whose names lack the zero (known to rust-cfb) or count the
/// filling behind it (known to olefile), and libgsf writes whatever a file of the system is called.
bool TakeName(const CompoundEntryRecord& record, CompoundName* name) {
  const bool possible =
      record.nameBytes % sizeof(char16_t) == 0 && record.nameBytes / sizeof(char16_t) <= NameUnits;
  if (!possible || record.nameBytes < sizeof(char16_t)) return false;
  const std::size_t most = record.nameBytes / sizeof(char16_t) - 1;
  std::size_t length = 0;
  for (; length < most && record.name[length] != 0; ++length) {
    name->units[length] = record.name[length];
  }
  name->length = static_cast<std::uint8_t>(length);
  return length > 0;
}

/// Relaxed: fields that mean nothing for the type of an entry are to be zero, and the colors those
/// of a red-black tree. Altium Designer gives storages a first sector, Word also a size, and
/// streams a class; Excel gives streams times. LibreOffice and OpenMcdf 2 put red under red. None
/// is looked at.
bool TakeRecord(const CompoundEntryRecord& record, bool isVersion3, Blocks<StorageInfo>& infos,
                ReadEntry* entry) {
  if (record.type == EntryStream || record.type == EntryRoot) {
    entry->start = record.start;
    entry->size = record.size;
    // Relaxed: in version 3 the upper half is to be zero. The system's own once left in it what was
    // there, as the format's description warns.
    if (isVersion3) entry->size = entry->size << HighBits >> HighBits;
  }
  if (record.type == EntryStream) return TakeName(record, &entry->name);
  entry->top = record.child;
  entry->storage = &infos[infos.Make()];
  entry->storage->classId = record.classId;
  entry->storage->stateBits = record.stateBits;
  entry->storage->created = record.created;
  entry->storage->modified = record.modified;
  // Relaxed: the root is to be called "Root Entry". Word has left it without a name.
  return record.type == EntryRoot || TakeName(record, &entry->name);
}

/// The records as they are numbered, and which of them were reached.
class Records {
 public:
  Records(SectorSource& source, Fat& fat, Blocks<StorageInfo>& infos)
      : source_(source), fat_(fat), infos_(infos), chain_(source.Header().directoryStart) {}

  Outcome Get(std::uint32_t number, CompoundEntryRecord* record) {
    const unsigned shift = source_.SectorShift() - RecordShift;
    const std::byte* bytes = nullptr;
    SectorRun place;
    Outcome outcome = chain_.Find(fat_, number >> shift, 1, &place);
    if (outcome == Outcome::Done) outcome = source_.Look(place.start, &bytes);
    if (outcome != Outcome::Done) return outcome;
    const std::size_t within = number & ((1U << shift) - 1);
    std::memcpy(record, bytes + within * sizeof *record, sizeof *record);
    return Outcome::Done;
  }

  /// The numbers of the entries in the tree under `top`, in its order. Each entry is in one tree
  /// only, and in one place of it. The tree may be as deep as it has entries: libgsf makes lists.
  Outcome InOrder(std::uint32_t top, std::vector<std::uint32_t>* numbers) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> above;  // an entry and what is right of it
    for (std::uint32_t at = top; at != NoStream || !above.empty();) {
      if (at != NoStream) {
        CompoundEntryRecord record;
        const Outcome outcome = Get(at, &record);
        if (outcome != Outcome::Done) return outcome;
        if (!reached_.Add(at)) return Outcome::Corrupt;
        above.emplace_back(at, record.right);
        at = record.left;
      } else {
        numbers->push_back(above.back().first);
        at = above.back().second;
        above.pop_back();
      }
    }
    return Outcome::Done;
  }

  Outcome Take(std::uint32_t number, ReadEntry* entry) {
    CompoundEntryRecord record;
    const Outcome outcome = Get(number, &record);
    if (outcome != Outcome::Done) return outcome;
    // The first entry is the root and no other is.
    const bool isKnown = number == 0 ? record.type == EntryRoot
                                     : record.type == EntryStorage || record.type == EntryStream;
    const bool isVersion3 = source_.Header().majorVersion == 3;
    return isKnown && TakeRecord(record, isVersion3, infos_, entry) ? Outcome::Done
                                                                    : Outcome::Corrupt;
  }

 private:
  static constexpr unsigned RecordShift = 7;
  static_assert(sizeof(CompoundEntryRecord) == 1U << RecordShift);

  SectorSource& source_;
  Fat& fat_;
  Blocks<StorageInfo>& infos_;
  FoundChain chain_;
  SectorSet reached_;
};

/// Puts a storage's children into the order of their names. False when two have the very same name.
/// Relaxed: the tree is to be in this order. rust-cfb up to 0.10 had other capitals: those of a
/// language, where the sharp s becomes two letters.
bool Sort(ReadEntry* begin, ReadEntry* end) {
  if (!std::is_sorted(begin, end, IsBefore)) std::sort(begin, end, IsBefore);
  const auto isSame = [](const ReadEntry& a, const ReadEntry& b) { return !IsBefore(a, b); };
  return std::adjacent_find(begin, end, isSame) == end;
}

/// Makes `count` entries that lie side by side the children of a storage.
void LinkChildren(ReadEntry* storage, ReadEntry* first, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    first[i].parent = storage;
    first[i].previous = i == 0 ? nullptr : &first[i - 1];
    first[i].next = i + 1 == count ? nullptr : &first[i + 1];
  }
  storage->storage->firstChild = &first[0];
  storage->storage->lastChild = &first[count - 1];
  storage->storage->childCount = static_cast<std::uint32_t>(count);
}

using Block = std::unique_ptr<ReadEntry[]>;

/// Reads the children of a storage and adds those that are storages to a list.
Outcome ReadChildren(Records& records, ReadEntry* storage, Block* children,
                     std::vector<ReadEntry*>* storages) {
  std::vector<std::uint32_t> numbers;
  Outcome outcome = records.InOrder(storage->top, &numbers);
  if (outcome != Outcome::Done || numbers.empty()) return outcome;
  *children = std::make_unique<ReadEntry[]>(numbers.size());
  ReadEntry* first = children->get();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    outcome = records.Take(numbers[i], &first[i]);
    if (outcome != Outcome::Done) return outcome;
  }
  if (!Sort(first, first + numbers.size())) return Outcome::Corrupt;
  LinkChildren(storage, first, numbers.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (!first[i].IsStream()) storages->push_back(&first[i]);
  }
  return Outcome::Done;
}

}  // namespace

Outcome ReadDirectory::Read(SectorSource& source, Fat& fat) {
  Records records(source, fat, infos_);
  Outcome outcome = records.Take(0, &root_);
  // Storages wait in a list, so that their nesting costs no depth of calls.
  std::vector<ReadEntry*> waiting = {&root_};
  while (outcome == Outcome::Done && !waiting.empty()) {
    ReadEntry* storage = waiting.back();
    waiting.pop_back();
    Block children;
    outcome = ReadChildren(records, storage, &children, &waiting);
    if (children != nullptr) blocks_.push_back(std::move(children));
  }
  return outcome;
}

CompoundEntry* ReadDirectory::Find(const CompoundEntry* storage, const CompoundName& name) const {
  const StorageInfo& info = *storage->storage;
  auto* first = static_cast<ReadEntry*>(info.firstChild);
  ReadEntry* end = first + info.childCount;
  for (const auto compare : {CompareExactly, Compare}) {
    ReadEntry* found = std::lower_bound(
        first, end, name,
        [&](const ReadEntry& a, const CompoundName& b) { return compare(a.name, b) < 0; });
    if (found != end && compare(found->name, name) == 0) return found;
  }
  return nullptr;
}
