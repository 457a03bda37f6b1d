#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "compound/directory.h"
#include "compound/found_chain.h"
#include "compound/sector_links.h"
#include "compound/sector_source.h"

/// A storage or a stream of a file that is read.
struct ReadEntry : CompoundEntry {
  std::uint32_t start = MarkEndOfChain;  // its first sector
  std::uint32_t top = NoStream;          // of the tree of its children
  std::unique_ptr<FoundChain> found;     // its sectors, while it is open
};

/// All entries of a file that is read. The children of a storage lie side by side in the format's
/// order, so that finding one is a search by halving, whatever the names are.
class ReadDirectory {
 public:
  /// Reads every entry that is reached from the root; Corrupt when they form no tree.
  /// May throw std::bad_alloc.
  Outcome Read(SectorSource& source, Fat& fat);

  ReadEntry* Root() { return &root_; }

  /// Names that differ only in case find the same element. Relaxed: there is to be only one of
  /// them. libgsf writes all that it is given: then the exact name wins, else the first.
  CompoundEntry* Find(const CompoundEntry* storage, const CompoundName& name) const;

 private:
  ReadEntry root_;
  std::vector<std::unique_ptr<ReadEntry[]>> blocks_;  // the children of one storage each
  Blocks<StorageInfo> infos_;
};
