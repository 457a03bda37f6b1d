#pragma once

#include <memory>

#include "compound/contents.h"
#include "compound/found_chain.h"
#include "compound/read_directory.h"
#include "compound/sector_links.h"
#include "compound/sector_source.h"

/// A compound file that is only read. It may be any file: whatever contradicts itself is
/// Corrupt, at the latest when the bytes are read that this concerns.
///
/// Opening reads the directory and nothing of the streams. Memory is taken by the entries of the
/// directory, and by an open stream for each fragment of it that was read.
class ReadDocument final : public CompoundContents {
 public:
  /// See SectorSource::Open.
  Outcome Open(const char* path, bool exclusive);

  /// Bytes; 512 or 4096.
  std::uint32_t SectorSize() const { return source_.SectorSize(); }

  CompoundEntry* Root() override { return directory_.Root(); }
  CompoundEntry* Find(const CompoundEntry* storage, const CompoundName& name) override {
    return directory_.Find(storage, name);
  }
  Outcome Read(CompoundEntry& stream, std::uint64_t offset, void* data, std::size_t size,
               std::size_t* done) override;
  void Closed(CompoundEntry& entry) override { static_cast<ReadEntry&>(entry).found.reset(); }
  void Finish() override { source_.Close(); }

 private:
  /// The part of a stream from some offset on that lies in one piece of the file, in bytes.
  struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
  };
  Outcome Locate(FoundChain& chain, std::uint64_t offset, std::uint64_t most, Extent* extent);
  Outcome LocateMini(FoundChain& chain, std::uint64_t offset, std::uint64_t most, Extent* extent);

  /// What is open when there is a file.
  struct Chains {
    explicit Chains(SectorSource& source) : fat(source), miniFat(source, fat) {}
    Fat fat;
    MiniFat miniFat;
  };

  SectorSource source_;
  std::unique_ptr<Chains> chains_;
  std::unique_ptr<FoundChain> miniStream_;
  ReadDirectory directory_;
};
