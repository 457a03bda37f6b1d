#pragma once

#include <cstddef>
#include <cstdint>

#include "compound/contents.h"
#include "compound/directory.h"
#include "compound/format.h"
#include "compound/gathering_file.h"
#include "compound/outcome.h"
#include "compound/streams.h"

/// One compound file that is being written: its directory, its streams and the file itself.
/// What lacks memory throws std::bad_alloc and is then without effect.
///
/// The file's tables lie nowhere until Flush puts them behind the streams; later writes go over
/// them. Their space is taken from the file whenever it grows, in the call that makes it grow.
class CompoundDocument final : public CompoundContents {
 public:
  explicit CompoundDocument(const CompoundParameters& parameters);

  /// Creates or empties the file; on failure nothing has changed. See OpenEmpty.
  Outcome Create(const char* path);

  const CompoundDirectory& Directory() const { return directory_; }
  CompoundEntry* Root() override { return directory_.Root(); }
  CompoundEntry* Find(const CompoundEntry* storage, const CompoundName& name) override {
    return directory_.Find(storage, name);
  }
  CompoundDocument* Written() override { return this; }

  Outcome AddEntry(CompoundEntry* parent, const CompoundName& name, bool isStream,
                   CompoundEntry** entry);

  /// Takes an entry away with everything beneath it. Nothing in it may be open. Never fails.
  void Destroy(CompoundEntry* entry);

  /// Gives an entry another name, another parent, or both. Never fails.
  void Move(CompoundEntry* entry, CompoundEntry* parent, const CompoundName& name);

  /// What a storage tells of itself, for changing it.
  StorageInfo& Change(CompoundEntry& storage);

  /// See CompoundStreams.
  Outcome Read(CompoundEntry& stream, std::uint64_t offset, void* data, std::size_t size,
               std::size_t* done) override;
  Outcome Write(CompoundEntry& stream, std::uint64_t offset, const void* data, std::size_t size,
                std::size_t* done);
  Outcome Resize(CompoundEntry& stream, std::uint64_t size);

  /// Makes the file valid as it stands and cuts it to its size, if anything has changed since the
  /// last time; with `toDisk` also waits for the disk.
  Outcome Flush(bool toDisk);

  void Finish() override;

 private:
  Outcome WriteFile();

  const CompoundParameters parameters_;
  GatheringFile file_;
  CompoundDirectory directory_;
  CompoundStreams streams_;
  bool changed_ = true;  // since the last flush
};
