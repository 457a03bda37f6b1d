#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "compound/disk.h"
#include "platform/storage.h"

/// A file that is written in large aligned pieces. Small writes gather in a few pieces of memory;
/// what covers a whole piece goes from the caller's memory straight to the file.
///
/// Space is taken first (Reserve), so that a later write into it cannot fail for lack of space.
/// Bytes that were reserved and never written read as zeros.
class GatheringFile {
 public:
  static constexpr std::size_t PieceSize = 512 * 1024;

  /// Creates or replaces the file, with space for its first `size` bytes; see OpenEmpty.
  HRESULT Create(const char* path, std::uint64_t size);

  /// Makes sure that the file has space for its first `size` bytes.
  HRESULT Reserve(std::uint64_t size);

  /// Both lie within the reserved size. A write that fails has changed nothing that was reported
  /// as written before.
  HRESULT Write(std::uint64_t offset, const void* data, std::size_t size);
  HRESULT WriteZeros(std::uint64_t offset, std::uint64_t size);

  /// Bytes beyond the end of the file read as zeros.
  HRESULT Read(std::uint64_t offset, void* data, std::size_t size);

  /// Hands everything gathered to the system and cuts the file to `size`, giving back what was
  /// reserved beyond; with `toDisk` also waits for the disk, and the first time for the folder that
  /// has the file's name. Once the disk has failed, every later
  /// wait fails as well: the system tells only once of bytes that it has lost.
  HRESULT Flush(std::uint64_t size, bool toDisk);

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

  HRESULT Gather(std::uint64_t offset, const std::byte* data, std::size_t size);
  Piece* Find(std::uint64_t pieceOffset);
  HRESULT Take(std::uint64_t pieceOffset, Piece** piece);
  HRESULT WriteOut(Piece& piece);
  HRESULT WriteDirect(std::uint64_t offset, const std::byte* data, std::size_t size);
  HRESULT ReadDirect(std::uint64_t offset, std::byte* data, std::size_t size);
  HRESULT Grow(std::uint64_t size);
  HRESULT Wait();

  OpenFile file_;
  std::string folder_;  // where the file's name is
  bool isNameOnDisk_ = false;
  std::uint64_t reserved_ = 0;  // the file has space up to here
  std::uint64_t touched_ = 0;   // nothing was ever written from here on
  std::uint64_t clock_ = 0;
  HRESULT synced_ = S_OK;  // or why the disk failed
  std::array<Piece, 4> pieces_;
};
