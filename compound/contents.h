#pragma once

#include <cstddef>
#include <cstdint>

#include "compound/directory.h"
#include "compound/outcome.h"

class CompoundDocument;

/// One compound file as the objects that are open on it see it, whether it is being written or
/// only read. Knows nothing of interfaces. Operations may throw std::bad_alloc and are then without
/// effect.
class CompoundContents {
 public:
  CompoundContents() = default;
  CompoundContents(const CompoundContents&) = delete;
  CompoundContents& operator=(const CompoundContents&) = delete;
  virtual ~CompoundContents() = default;

  virtual CompoundEntry* Root() = 0;

  /// The element of this name in a storage; null when there is none.
  virtual CompoundEntry* Find(const CompoundEntry* storage, const CompoundName& name) = 0;

  /// Reads up to the end of the stream. On failure `*done` bytes were read.
  virtual Outcome Read(CompoundEntry& stream, std::uint64_t offset, void* data, std::size_t size,
                       std::size_t* done) = 0;

  /// The last object that looked at an entry has gone.
  virtual void Closed(CompoundEntry& /*entry*/) {}

  /// The file as it is being written; null when it is only read.
  virtual CompoundDocument* Written() { return nullptr; }

  /// Makes the file complete, if it is being written, and closes it.
  virtual void Finish() = 0;

  std::uint32_t openObjects = 0;  // on all its entries
};
