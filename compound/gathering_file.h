#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "compound/disk.h"
#include "compound/outcome.h"

/// A file that is written in large aligned pieces. Small writes gather in a few pieces of memory;
/// what covers a whole piece goes from the caller's memory straight to the file.
///
/// Space is taken first (Reserve, Take), so that a later write into it cannot fail for lack of
/// space. Bytes that were reserved and never written read as zeros. A file in memory may also be
/// written where no space was taken: what is large goes to the file at once and takes it so, and
/// what gathers takes the space of its piece first.
class GatheringFile {
 public:
  static constexpr std::size_t PieceSize = 512 * 1024;

  /// Creates or replaces the file, with space for its first `size` bytes; see OpenEmpty.
  Outcome Create(const char* path, std::size_t size);

  /// Makes sure that the file has space for its first `size` bytes.
  Outcome Reserve(std::uint64_t size);

  /// Makes sure that there is space for the bytes [from, to), whatever lies before them.
  Outcome Take(std::uint64_t from, std::uint64_t to);

  /// Whether a write may go where no space was taken.
  bool IsInMemory() const { return isInMemory_; }

  /// Both lie within space that was taken, but for a file in memory. A write that fails has changed
  /// nothing but what it was to write over.
  Outcome Write(std::uint64_t offset, const void* data, std::size_t size);
  Outcome WriteZeros(std::uint64_t offset, std::uint64_t size);

  /// Bytes beyond the end of the file read as zeros.
  Outcome Read(std::uint64_t offset, void* data, std::size_t size);

  /// Hands everything gathered to the system and cuts the file to `size` bytes, giving back what
  /// was reserved beyond.
  Outcome Flush(std::uint64_t size);

  /// Waits for the disk, and the first time for the folder that has the file's name. Once it has
  /// failed it always fails, as the system tells only once of bytes that it has lost; but when
  /// there was nothing left to open the folder with, the next time tries again.
  Outcome Wait();

  void Close();

 private:
  /// The bytes [begin, end) of one aligned part of the file, newer than what the file has.
  struct Piece {
    std::unique_ptr<std::byte[]> bytes;
    std::uint64_t offset = 0;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::uint64_t lastUse = 0;
  };

  Outcome Gather(std::uint64_t offset, const std::byte* data, std::size_t size);
  Piece* Find(std::uint64_t pieceOffset);
  Outcome Begin(std::uint64_t pieceOffset, Piece** piece);
  Outcome WriteOut(Piece& piece);
  Outcome WriteDirect(std::uint64_t offset, const std::byte* data, std::size_t size);
  Outcome ReadDirect(std::uint64_t offset, std::byte* data, std::size_t size);
  Outcome Grow(std::uint64_t size);

  OpenFile file_;
  std::string folder_;  // where the file's name is
  bool isNameOnDisk_ = false;
  bool isInMemory_ = false;
  std::uint64_t reserved_ = 0;  // the file has space up to here
  std::uint64_t touched_ = 0;   // nothing was ever written from here on
  std::uint64_t clock_ = 0;
  Outcome synced_ = Outcome::Done;  // or why the disk failed
  std::array<Piece, 4> pieces_;
};
