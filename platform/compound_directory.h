#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/compound_name.h"
#include "platform/compound_runs.h"

class OpenObject;
struct CompoundEntry;

/// What a storage has and a stream has not. Times are in FILETIME's units; 0 is "none".
struct StorageInfo {
  CompoundEntry* firstChild = nullptr;
  CompoundEntry* lastChild = nullptr;
  std::uint32_t childCount = 0;
  std::uint32_t stateBits = 0;
  CLSID clsid = {};
  std::uint64_t created = 0;
  std::uint64_t modified = 0;
};

/// A storage or a stream of the file; lives until it is destroyed or the document ends.
struct CompoundEntry {
  CompoundEntry* parent = nullptr;
  CompoundEntry* next = nullptr;
  CompoundEntry* previous = nullptr;
  OpenObject* opened = nullptr;          // the objects that look at it
  std::unique_ptr<StorageInfo> storage;  // null for a stream
  std::uint64_t size = 0;
  SectorChain chain;  // in the mini stream while `size` is below the cutoff
  CompoundName name;

  bool IsStream() const { return storage == nullptr; }
};

/// All entries of a file. Finding one costs the same however many there are; their order and
/// their place in the file are only made when the directory is written.
class CompoundDirectory {
 public:
  CompoundDirectory();
  ~CompoundDirectory();
  CompoundDirectory(const CompoundDirectory&) = delete;
  CompoundDirectory& operator=(const CompoundDirectory&) = delete;

  CompoundEntry* Root() const { return root; }
  std::uint32_t Count() const { return count; }  // the root included

  CompoundEntry* Find(const CompoundEntry* parent, const CompoundName& name) const;

  /// Adds an entry; may throw std::bad_alloc, then nothing has changed.
  CompoundEntry* Add(CompoundEntry* parent, const CompoundName& name, bool isStream);

  /// Takes away one entry, which has no children and no sectors any more.
  void Remove(CompoundEntry* entry);

  /// Gives an entry another name, another parent, or both. Never fails.
  void Move(CompoundEntry* entry, CompoundEntry* parent, const CompoundName& name);

 private:
  struct Slot {
    CompoundEntry* entry = nullptr;
    std::uint32_t hash = 0;
  };

  static std::uint32_t HashOf(const CompoundEntry* parent, const CompoundName& name);
  void Insert(CompoundEntry* entry);
  void Erase(const CompoundEntry* entry);
  void GrowTable();
  CompoundEntry* NewEntry();

  std::vector<Slot> table;  // open addressing; at most half full
  std::vector<std::unique_ptr<CompoundEntry[]>> blocks;
  std::size_t usedInBlock = 0;
  CompoundEntry* unused = nullptr;  // removed entries, linked by `next`
  CompoundEntry* root = nullptr;
  std::uint32_t count = 0;
};
