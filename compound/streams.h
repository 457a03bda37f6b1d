#pragma once

#include <cstddef>
#include <cstdint>

#include "compound/directory.h"
#include "compound/gathering_file.h"
#include "compound/outcome.h"
#include "compound/sector_space.h"
#include "compound/table_space.h"

/// The bytes of streams: where in the file they lie, and how streams grow and shrink. Short streams
/// lie in the mini stream, long ones in sectors of their own; a stream that grows or shrinks past
/// the limit moves. All offsets and sizes are in bytes. What lacks memory throws std::bad_alloc and
/// is then without effect.
class CompoundStreams {
 public:
  CompoundStreams(const CompoundParameters& parameters, const CompoundDirectory& directory,
                  GatheringFile& file);

  /// Takes the space that the tables need with so many entries in the directory.
  Outcome SecureEntries(std::uint64_t entries);

  /// Reads up to the end of the stream; `*done` bytes were there.
  Outcome Read(const CompoundEntry& stream, std::uint64_t offset, void* data, std::size_t size,
               std::size_t* done);

  /// Grows the stream as needed; what lies between its end and `offset` becomes zeros. On failure
  /// the stream holds the first `*done` bytes.
  Outcome Write(CompoundEntry& stream, std::uint64_t offset, const void* data, std::size_t size,
                std::size_t* done);

  Outcome Resize(CompoundEntry& stream, std::uint64_t size);

  /// Gives back all that the stream has. Never fails.
  void Clear(CompoundEntry& stream);

  /// Gives back what the mini stream has no more use for; then what the tables are to describe.
  void TrimMiniStream();
  const SectorSpace& Space() const { return space_; }
  const SectorSpace& MiniSpace() const { return miniSpace_; }
  const SectorChain& MiniStream() const { return miniStream_; }

  /// The sector from which on there is space for the tables.
  std::uint32_t PlaceOfTables() {
    return tableSpace_.Place({space_.End(), directory_.Count(), miniSpace_.End()});
  }

  /// After a flush, which gives back the space behind the end of the file.
  void ForgetTableSpace() { tableSpace_.Forget(); }

 private:
  SectorSpace& HomeOf(std::uint64_t streamSize) {
    return parameters_.IsMini(streamSize) ? miniSpace_ : space_;
  }
  Outcome GrowTo(CompoundEntry& stream, std::uint64_t size, std::uint64_t zeroUpTo);
  void GrowByHalves(CompoundEntry& stream, std::uint64_t offset, std::size_t size);
  Outcome ShrinkTo(CompoundEntry& stream, std::uint64_t size);
  Outcome ChangeHome(CompoundEntry& stream, std::uint64_t size, std::uint64_t keep,
                     std::uint64_t zeroUpTo);
  Outcome Extend(SectorSpace& space, SectorChain& chain, std::uint32_t count);
  Outcome ExtendMiniStream(std::uint64_t miniEnd);

  Outcome ReadChain(const SectorSpace& space, const SectorChain& chain, std::uint64_t offset,
                    void* data, std::size_t size);
  Outcome WriteChain(const SectorSpace& space, const SectorChain& chain, std::uint64_t offset,
                     const void* data, std::size_t size, std::size_t* done);
  Outcome ZeroChain(const SectorSpace& space, const SectorChain& chain, std::uint64_t from,
                    std::uint64_t to);

  const CompoundParameters& parameters_;
  const CompoundDirectory& directory_;
  GatheringFile& file_;
  TableSpace tableSpace_;
  SectorSpace space_;
  SectorChain miniStream_;
  SectorSpace miniSpace_;
};
