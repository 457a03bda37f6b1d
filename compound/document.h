#pragma once

#include <cstddef>
#include <cstdint>

#include "compound/contents.h"
#include "compound/directory.h"
#include "compound/format.h"
#include "compound/gathering_file.h"
#include "compound/layout.h"
#include "compound/sector_space.h"

/// One compound file that is being written: its directory, its sectors and the bytes in them.
///
/// The file's tables lie nowhere until Flush puts them behind the streams; later writes go over
/// them. Their space is taken from the file whenever it grows, in the call that makes it grow.
class CompoundDocument final : public CompoundContents {
 public:
  explicit CompoundDocument(const CompoundParameters& fileParameters);

  HRESULT Create(const char* path);

  CompoundDirectory& Directory() { return directory_; }
  CompoundEntry* Root() override { return directory_.Root(); }
  CompoundEntry* Find(const CompoundEntry* storage, const CompoundName& name) override {
    return directory_.Find(storage, name);
  }
  CompoundDocument* Written() override { return this; }

  HRESULT AddEntry(CompoundEntry* parent, const CompoundName& name, bool isStream,
                   CompoundEntry** entry);

  /// Takes an entry away with everything beneath it. Nothing in it may be open.
  void Destroy(CompoundEntry* entry);

  HRESULT Read(CompoundEntry& stream, std::uint64_t offset, void* data, std::size_t size,
               std::size_t* done) override;

  /// Grows the stream as needed; what lies between its end and `offset` becomes zeros. On failure
  /// the stream holds the first `done` bytes.
  HRESULT Write(CompoundEntry& stream, std::uint64_t offset, const void* data, std::size_t size,
                std::size_t* done);

  HRESULT Resize(CompoundEntry& stream, std::uint64_t size);

  /// Makes the file valid as it stands and cuts it to its size.
  HRESULT Flush(bool toDisk);

  void Finish() override;

 private:
  friend class CompoundWriter;

  bool IsMini(std::uint64_t size) const { return size < parameters_.miniCutoff; }
  std::uint32_t UnitsFor(std::uint64_t size) const;
  std::uint64_t OffsetOf(std::uint32_t sector) const;

  /// Takes the space of a file with these ends; with it, that of all tables.
  HRESULT Secure(std::uint64_t end, std::uint64_t entries, std::uint64_t miniEnd);

  HRESULT GrowTo(CompoundEntry& stream, std::uint64_t size, std::uint64_t zeroUpTo);
  HRESULT ShrinkTo(CompoundEntry& stream, std::uint64_t size);
  HRESULT ChangeHome(CompoundEntry& stream, std::uint64_t size, std::uint64_t keep);
  HRESULT Extend(SectorChain& chain, bool mini, std::uint32_t count);
  HRESULT ExtendMiniStream(std::uint64_t miniEnd);
  void Trim(SectorChain& chain, bool mini, std::uint32_t count);
  void TrimMiniStream();

  /// The part of a stream from `offset` on that lies in one piece of the file.
  struct Extent {
    std::uint64_t offset;
    std::uint64_t size;
  };
  Extent Locate(const SectorChain& chain, bool mini, std::uint64_t offset) const;
  HRESULT ReadChain(const SectorChain& chain, bool mini, std::uint64_t offset, void* data,
                    std::size_t size);
  HRESULT WriteChain(const SectorChain& chain, bool mini, std::uint64_t offset, const void* data,
                     std::size_t size, std::size_t* done);
  HRESULT ZeroChain(const SectorChain& chain, bool mini, std::uint64_t from, std::uint64_t to);

  CompoundParameters parameters_;
  GatheringFile file_;
  CompoundDirectory directory_;
  SectorSpace space_;
  SectorSpace miniSpace_;
  SectorChain miniStream_;
  std::uint64_t securedEnd_ = 0;
  std::uint64_t securedEntries_ = 0;
  std::uint64_t securedMini_ = 0;
};
