#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "compound/blocks.h"
#include "compound/format.h"
#include "compound/name.h"
#include "compound/sector_chain.h"

class OpenObject;  // see open_object.h
struct CompoundEntry;

/// What a storage has and a stream has not. Times count 100 nanoseconds from 1601
/// on; 0 is "none".
struct StorageInfo {
  CompoundEntry* firstChild = nullptr;
  CompoundEntry* lastChild = nullptr;
  std::uint32_t childCount = 0;
  bool isAscending = true;  // the children are linked in the format's order
  bool isInTable = false;   // the children are, since one was looked up among many
  std::uint32_t stateBits = 0;
  ClassId classId = {};
  std::uint64_t created = 0;
  std::uint64_t modified = 0;
};

/// A storage or a stream of the file; lives until it is destroyed or the document ends.
struct CompoundEntry {
  CompoundEntry* parent = nullptr;
  CompoundEntry* next = nullptr;
  CompoundEntry* previous = nullptr;
  OpenObject* opened = nullptr;    // the objects that look at it
  StorageInfo* storage = nullptr;  // null for a stream
  std::uint64_t size = 0;          // bytes
  SectorChain chain;               // of the mini stream while `size` is below the cutoff
  CompoundName name;
  std::uint32_t number = 0;  // in the directory's memory; nobody else's is the same

  bool IsStream() const { return storage == nullptr; }
};

/// All entries of a file. Finding one costs the same however many there are: those of a storage
/// with many are in a table from the first look on, which has room for all from then on. As long as
/// there is no memory for it they are looked through one by one. Their order and their place in the
/// file are only made when the directory is written.
class CompoundDirectory {
 public:
  CompoundDirectory();
  CompoundDirectory(const CompoundDirectory&) = delete;
  CompoundDirectory& operator=(const CompoundDirectory&) = delete;

  CompoundEntry* Root() const { return root_; }
  std::uint32_t Count() const { return count_; }  // the root included

  /// Null when there is none.
  CompoundEntry* Find(const CompoundEntry* parent, const CompoundName& name);

  /// Adds an entry; may throw std::bad_alloc, then nothing has changed.
  CompoundEntry* Add(CompoundEntry* parent, const CompoundName& name, bool isStream);

  /// Takes away one entry, which has no children and no sectors any more.
  void Remove(CompoundEntry* entry);

  /// Gives an entry another name, another parent, or both. Never fails.
  void Move(CompoundEntry* entry, CompoundEntry* parent, const CompoundName& name);

 private:
  struct Slot {
    std::uint32_t number = 0;  // of an entry; the root, which has no name to be found by, is 0
    std::uint32_t hash = 0;
  };

  static std::uint32_t HashOf(const CompoundEntry* parent, const CompoundName& name);
  void Place(CompoundEntry* entry, CompoundEntry* parent);
  void Displace(CompoundEntry* entry);
  void Insert(const CompoundEntry* entry);
  void Erase(const CompoundEntry* entry);
  bool PutInTable(StorageInfo& info);
  void MakeRoom(std::uint32_t count);
  CompoundEntry* NewEntry(bool isStream);

  std::vector<Slot> table_;  // open addressing; empty until the first look, at most half full
  Blocks<CompoundEntry> entries_;
  Blocks<StorageInfo> infos_;
  CompoundEntry* unused_[2] = {};  // removed storages and streams, linked by `next`
  CompoundEntry* root_ = nullptr;
  std::uint32_t count_ = 0;
};

/// Links the children of a storage in the format's order. May throw std::bad_alloc; then they are
/// as they were.
void SortChildren(StorageInfo& storage);

/// The same, and lists them.
std::vector<CompoundEntry*> SortedChildren(const CompoundEntry& storage);

/// One node of a search tree over positions 0 to count - 1: the positions of those beneath it, or
/// NoStream.
struct TreeNode {
  std::uint32_t left;
  std::uint32_t right;
  CompoundColor color;
};

/// The root of the tree over positions [begin, end): its middle.
constexpr std::uint32_t TreeRoot(std::uint32_t begin, std::uint32_t end) {
  return begin == end ? NoStream : begin + (end - begin) / 2;
}

/// Visits, in order of position, the nodes of the red-black tree that halving makes. All levels
/// but the deepest are full, so the tree is valid with black nodes everywhere and, where the
/// deepest level is not full, red ones there. `blackLevels` counts the levels that are black.
template <class Visit>
void VisitTree(std::uint32_t begin, std::uint32_t end, unsigned blackLevels, const Visit& visit) {
  if (begin == end) return;
  const std::uint32_t middle = TreeRoot(begin, end);
  const unsigned below = blackLevels == 0 ? 0 : blackLevels - 1;
  VisitTree(begin, middle, below, visit);
  visit(TreeNode{TreeRoot(begin, middle), TreeRoot(middle + 1, end),
                 blackLevels == 0 ? ColorRed : ColorBlack});
  VisitTree(middle + 1, end, below, visit);
}

/// How many levels of a tree of `count` nodes are full.
constexpr unsigned FullLevels(std::uint32_t count) {
  return static_cast<unsigned>(std::bit_width(std::uint64_t{count} + 1)) - 1;
}
