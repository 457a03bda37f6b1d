#include "compound/directory.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace {

constexpr std::size_t SmallestTable = 64;
constexpr std::uint32_t FewChildren = 8;  // of one storage, not worth a place in the table

/// Whether a name comes behind all those of the storage's children, which are in order. Most
/// writers make elements in such an order: then nothing has to be looked up and nothing sorted.
bool IsBehindAll(const StorageInfo& storage, const CompoundName& name) {
  return storage.isAscending &&
         (storage.lastChild == nullptr || CompareNames(storage.lastChild->name, name) < 0);
}

void Link(CompoundEntry* entry, CompoundEntry* parent) {
  StorageInfo& info = *parent->storage;
  info.isAscending = IsBehindAll(info, entry->name);
  entry->parent = parent;
  entry->next = nullptr;
  entry->previous = info.lastChild;
  (info.lastChild != nullptr ? info.lastChild->next : info.firstChild) = entry;
  info.lastChild = entry;
  ++info.childCount;
}

void Unlink(CompoundEntry* entry) {
  StorageInfo& info = *entry->parent->storage;
  (entry->previous != nullptr ? entry->previous->next : info.firstChild) = entry->next;
  (entry->next != nullptr ? entry->next->previous : info.lastChild) = entry->previous;
  --info.childCount;
  if (info.childCount == 0) info.isAscending = true;
}

/// An entry with the part of its name that decides nearly every comparison.
struct SortItem {
  std::uint64_t key;
  CompoundEntry* entry;
};

bool IsBefore(const SortItem& a, const SortItem& b) {
  if (a.key != b.key) return a.key < b.key;
  return CompareNames(a.entry->name, b.entry->name) < 0;
}

/// The four upper-cased units of a name from `start` on; missing ones count as zero.
std::uint64_t FourUnits(const CompoundName& name, std::size_t start) {
  std::uint64_t key = 0;
  for (std::size_t i = start; i < start + 4; ++i) {
    key = key << 16 | (i < name.length ? Uppercase(name.units[i]) : 0U);
  }
  return key;
}

std::size_t CommonPrefix(const CompoundName& a, const CompoundName& b, std::size_t limit) {
  std::size_t i = 0;
  while (i < limit &&
         (a.units[i] == b.units[i] || Uppercase(a.units[i]) == Uppercase(b.units[i]))) {
    ++i;
  }
  return i;
}

/// Sorts names of one length by the four units behind what they all have in common.
void SortSameLength(SortItem* begin, SortItem* end) {
  const CompoundName& first = begin->entry->name;
  std::size_t common = first.length;
  for (SortItem* item = begin + 1; item < end; ++item) {
    common = CommonPrefix(first, item->entry->name, common);
  }
  for (SortItem* item = begin; item < end; ++item) item->key = FourUnits(item->entry->name, common);
  if (!std::is_sorted(begin, end, IsBefore)) std::sort(begin, end, IsBefore);
}

CompoundEntry* FindByWalking(const StorageInfo& storage, const CompoundName& name) {
  CompoundEntry* child = storage.firstChild;
  while (child != nullptr && !IsSameName(child->name, name)) child = child->next;
  return child;
}

std::vector<SortItem> SortedFew(const StorageInfo& storage) {
  std::vector<SortItem> sorted;
  sorted.reserve(storage.childCount);
  for (CompoundEntry* e = storage.firstChild; e != nullptr; e = e->next) sorted.push_back({0, e});
  std::sort(sorted.begin(), sorted.end(), IsBefore);
  return sorted;
}

std::vector<SortItem> SortedMany(const StorageInfo& info) {
  std::size_t starts[MaxNameUnits + 2] = {};
  for (const CompoundEntry* e = info.firstChild; e != nullptr; e = e->next) {
    ++starts[e->name.length + 1];
  }
  for (std::size_t length = 1; length < MaxNameUnits + 2; ++length) {
    starts[length] += starts[length - 1];
  }
  std::vector<SortItem> items(info.childCount);
  std::size_t ends[MaxNameUnits + 1];
  std::copy_n(starts, MaxNameUnits + 1, ends);
  for (CompoundEntry* e = info.firstChild; e != nullptr; e = e->next) {
    items[ends[e->name.length]++] = {0, e};
  }
  for (std::size_t length = 1; length <= MaxNameUnits; ++length) {
    if (starts[length] < ends[length]) {
      SortSameLength(items.data() + starts[length], items.data() + ends[length]);
    }
  }
  return items;
}

}  // namespace

CompoundDirectory::CompoundDirectory() {
  root_ = NewEntry(false);
  count_ = 1;
}

std::uint32_t CompoundDirectory::HashOf(const CompoundEntry* parent, const CompoundName& name) {
  const std::uint64_t both = std::uint64_t{parent->number} << 32 | HashOfName(name);
  return static_cast<std::uint32_t>(both * 0x9E3779B97F4A7C15U >> 32);
}

CompoundEntry* CompoundDirectory::Find(const CompoundEntry* parent, const CompoundName& name) {
  StorageInfo& info = *parent->storage;
  if (IsBehindAll(info, name)) return nullptr;
  if (!info.isInTable && (info.childCount <= FewChildren || !PutInTable(info))) {
    return FindByWalking(info, name);
  }
  const std::uint32_t hash = HashOf(parent, name);
  const std::size_t mask = table_.size() - 1;
  for (std::size_t i = hash & mask; table_[i].number != 0; i = (i + 1) & mask) {
    if (table_[i].hash != hash) continue;
    CompoundEntry* entry = &entries_[table_[i].number];
    if (entry->parent == parent && IsSameName(entry->name, name)) return entry;
  }
  return nullptr;
}

/// False when there is no memory for that.
bool CompoundDirectory::PutInTable(StorageInfo& info) {
  try {
    MakeRoom(count_);
  } catch (const std::bad_alloc&) {
    return false;
  }
  for (CompoundEntry* e = info.firstChild; e != nullptr; e = e->next) Insert(e);
  info.isInTable = true;
  return true;
}

CompoundEntry* CompoundDirectory::Add(CompoundEntry* parent, const CompoundName& name,
                                      bool isStream) {
  if (!table_.empty()) MakeRoom(count_ + 1);
  CompoundEntry* entry = NewEntry(isStream);
  entry->name = name;
  Place(entry, parent);
  ++count_;
  return entry;
}

void CompoundDirectory::Remove(CompoundEntry* entry) {
  Displace(entry);
  if (!entry->IsStream()) *entry->storage = {};
  entry->size = 0;
  entry->next = std::exchange(unused_[entry->IsStream() ? 1 : 0], entry);
  --count_;
}

void CompoundDirectory::Move(CompoundEntry* entry, CompoundEntry* parent,
                             const CompoundName& name) {
  Displace(entry);
  entry->name = name;
  Place(entry, parent);
}

/// Links an entry to its storage; in the table there is room for it.
void CompoundDirectory::Place(CompoundEntry* entry, CompoundEntry* parent) {
  Link(entry, parent);
  if (parent->storage->isInTable) Insert(entry);
}

void CompoundDirectory::Displace(CompoundEntry* entry) {
  if (entry->parent->storage->isInTable) Erase(entry);
  Unlink(entry);
}

void CompoundDirectory::Insert(const CompoundEntry* entry) {
  const std::uint32_t hash = HashOf(entry->parent, entry->name);
  const std::size_t mask = table_.size() - 1;
  std::size_t i = hash & mask;
  while (table_[i].number != 0) i = (i + 1) & mask;
  table_[i] = {entry->number, hash};
}

void CompoundDirectory::Erase(const CompoundEntry* entry) {
  const std::size_t mask = table_.size() - 1;
  std::size_t hole = HashOf(entry->parent, entry->name) & mask;
  while (table_[hole].number != entry->number) hole = (hole + 1) & mask;
  // Later slots move back into the hole unless that would put them before their own place.
  for (std::size_t i = (hole + 1) & mask; table_[i].number != 0; i = (i + 1) & mask) {
    const std::size_t wanted = table_[i].hash & mask;
    if (((i - wanted) & mask) >= ((i - hole) & mask)) {
      table_[hole] = table_[i];
      hole = i;
    }
  }
  table_[hole] = {};
}

/// Makes the table large enough for `count` entries.
void CompoundDirectory::MakeRoom(std::uint32_t count) {
  std::size_t size = std::max(SmallestTable, table_.size());
  while (size < count * std::size_t{2}) size *= 2;
  if (size == table_.size()) return;
  std::vector<Slot> larger(size);
  const std::size_t mask = larger.size() - 1;
  for (const Slot& slot : table_) {
    if (slot.number == 0) continue;
    std::size_t i = slot.hash & mask;
    while (larger[i].number != 0) i = (i + 1) & mask;
    larger[i] = slot;
  }
  table_.swap(larger);
}

CompoundEntry* CompoundDirectory::NewEntry(bool isStream) {
  CompoundEntry*& unused = unused_[isStream ? 1 : 0];
  if (unused != nullptr) return std::exchange(unused, unused->next);
  StorageInfo* info = isStream ? nullptr : &infos_[infos_.Make()];
  const std::uint32_t number = entries_.Make();
  CompoundEntry* entry = &entries_[number];
  entry->number = number;
  entry->storage = info;
  return entry;
}

void SortChildren(StorageInfo& storage) {
  if (storage.isAscending) return;
  const std::vector<SortItem> sorted =
      storage.childCount <= FewChildren ? SortedFew(storage) : SortedMany(storage);
  CompoundEntry* last = nullptr;
  CompoundEntry** link = &storage.firstChild;
  for (const SortItem& item : sorted) {
    item.entry->previous = last;
    *link = item.entry;
    link = &item.entry->next;
    last = item.entry;
  }
  *link = nullptr;
  storage.lastChild = last;
  storage.isAscending = true;
}

std::vector<CompoundEntry*> SortedChildren(const CompoundEntry& storage) {
  StorageInfo& info = *storage.storage;
  SortChildren(info);
  std::vector<CompoundEntry*> sorted;
  sorted.reserve(info.childCount);
  for (CompoundEntry* e = info.firstChild; e != nullptr; e = e->next) sorted.push_back(e);
  return sorted;
}
