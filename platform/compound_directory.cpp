#include "platform/compound_directory.h"

#include <utility>

namespace {

constexpr std::size_t BlockEntries = 256;
constexpr std::size_t SmallestTable = 64;

void Link(CompoundEntry* entry, CompoundEntry* parent) {
  StorageInfo& info = *parent->storage;
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
}

bool SameName(const CompoundName& a, const CompoundName& b) {
  return CompareNames(a.units, a.length, b.units, b.length) == 0;
}

}  // namespace

CompoundDirectory::CompoundDirectory() : table(SmallestTable) {
  root = NewEntry();
  root->storage = std::make_unique<StorageInfo>();
  count = 1;
}

CompoundDirectory::~CompoundDirectory() {
  for (const auto& block : blocks) {
    for (std::size_t i = 0; i < BlockEntries; ++i) block[i].chain.Free();
  }
}

std::uint32_t CompoundDirectory::HashOf(const CompoundEntry* parent, const CompoundName& name) {
  const auto address = reinterpret_cast<std::uintptr_t>(parent);
  const std::uint64_t mixed = (name.hash ^ (address << 20)) * 0x9E3779B97F4A7C15U;
  return static_cast<std::uint32_t>(mixed >> 32);
}

CompoundEntry* CompoundDirectory::Find(const CompoundEntry* parent,
                                       const CompoundName& name) const {
  const std::uint32_t hash = HashOf(parent, name);
  const std::size_t mask = table.size() - 1;
  for (std::size_t i = hash & mask; table[i].entry != nullptr; i = (i + 1) & mask) {
    CompoundEntry* entry = table[i].entry;
    if (table[i].hash == hash && entry->parent == parent && SameName(entry->name, name)) {
      return entry;
    }
  }
  return nullptr;
}

CompoundEntry* CompoundDirectory::Add(CompoundEntry* parent, const CompoundName& name,
                                      bool isStream) {
  if ((count + 1) * std::size_t{2} > table.size()) GrowTable();
  std::unique_ptr<StorageInfo> info = isStream ? nullptr : std::make_unique<StorageInfo>();
  CompoundEntry* entry = NewEntry();
  entry->storage = std::move(info);
  entry->name = name;
  Link(entry, parent);
  Insert(entry);
  ++count;
  return entry;
}

void CompoundDirectory::Remove(CompoundEntry* entry) {
  Erase(entry);
  Unlink(entry);
  entry->storage.reset();
  entry->size = 0;
  entry->next = unused;
  unused = entry;
  --count;
}

void CompoundDirectory::Move(CompoundEntry* entry, CompoundEntry* parent,
                             const CompoundName& name) {
  Erase(entry);
  Unlink(entry);
  entry->name = name;
  Link(entry, parent);
  Insert(entry);
}

void CompoundDirectory::Insert(CompoundEntry* entry) {
  const std::uint32_t hash = HashOf(entry->parent, entry->name);
  const std::size_t mask = table.size() - 1;
  std::size_t i = hash & mask;
  while (table[i].entry != nullptr) i = (i + 1) & mask;
  table[i] = {entry, hash};
}

void CompoundDirectory::Erase(const CompoundEntry* entry) {
  const std::size_t mask = table.size() - 1;
  std::size_t hole = HashOf(entry->parent, entry->name) & mask;
  while (table[hole].entry != entry) hole = (hole + 1) & mask;
  // Later slots move back into the hole unless that would put them before their own place.
  for (std::size_t i = (hole + 1) & mask; table[i].entry != nullptr; i = (i + 1) & mask) {
    const std::size_t wanted = table[i].hash & mask;
    if (((i - wanted) & mask) >= ((i - hole) & mask)) {
      table[hole] = table[i];
      hole = i;
    }
  }
  table[hole] = {};
}

void CompoundDirectory::GrowTable() {
  std::vector<Slot> larger(table.size() * 2);
  const std::size_t mask = larger.size() - 1;
  for (const Slot& slot : table) {
    if (slot.entry == nullptr) continue;
    std::size_t i = slot.hash & mask;
    while (larger[i].entry != nullptr) i = (i + 1) & mask;
    larger[i] = slot;
  }
  table.swap(larger);
}

CompoundEntry* CompoundDirectory::NewEntry() {
  if (unused != nullptr) return std::exchange(unused, unused->next);
  if (blocks.empty() || usedInBlock == BlockEntries) {
    blocks.push_back(std::make_unique<CompoundEntry[]>(BlockEntries));
    usedInBlock = 0;
  }
  return &blocks.back()[usedInBlock++];
}
