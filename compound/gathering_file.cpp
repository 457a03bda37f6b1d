#include "compound/gathering_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "compound/file_creation.h"

namespace {

constexpr std::size_t PieceSize = GatheringFile::PieceSize;
constexpr std::size_t LeastDirect = 32 * 1024;  // bytes that do not gather in a file in memory
constexpr std::uint64_t SmallestGrowth = 256 * 1024;
constexpr std::uint64_t LargestGrowth = 32 * 1024 * 1024;
alignas(4096) constexpr std::byte Zeros[64 * 1024] = {};

std::uint64_t PieceOf(std::uint64_t offset) { return offset & ~std::uint64_t{PieceSize - 1}; }

}  // namespace

Outcome GatheringFile::Create(const char* path, std::size_t size) {
  // Memory first, as nothing may fail once the old file is cut.
  Piece& first = pieces_[0];
  first.bytes.reset(new (std::nothrow) std::byte[PieceSize]);
  if (!first.bytes) return Outcome::NoMemory;
  const Outcome outcome = OpenEmpty(path, size, &file_, &folder_);
  if (outcome != Outcome::Done) return outcome;
  std::memset(first.bytes.get(), 0, size);
  first.end = size;
  isInMemory_ = CurrentDisk().IsInMemory(file_.Number());
  touched_ = reserved_ = size;
  return Outcome::Done;
}

Outcome GatheringFile::Reserve(std::uint64_t size) {
  return size <= reserved_ ? Outcome::Done : Grow(size);
}

Outcome GatheringFile::Grow(std::uint64_t size) {
  const std::uint64_t ahead = std::clamp(reserved_ / 8, SmallestGrowth, LargestGrowth);
  const std::uint64_t generous = PieceOf(std::max(size, reserved_ + ahead) + PieceSize - 1);
  int error = 0;
  // A disk that is nearly full still takes what is really needed.
  for (const std::uint64_t to : {generous, size}) {
    error = CurrentDisk().TakeSpace(file_.Number(), reserved_, to, Disk::Length::Grow);
    if (error == 0) {
      reserved_ = to;
      return Outcome::Done;
    }
  }
  return OutcomeOfWriting(error);
}

Outcome GatheringFile::Take(std::uint64_t from, std::uint64_t to) {
  from = std::max(from, reserved_);
  if (from >= to) return Outcome::Done;
  return OutcomeOfWriting(CurrentDisk().TakeSpace(file_.Number(), from, to, Disk::Length::Grow));
}

Outcome GatheringFile::Write(std::uint64_t offset, const void* data, std::size_t size) {
  auto* from = static_cast<const std::byte*>(data);
  while (size > 0) {
    const std::size_t within = offset & (PieceSize - 1);
    std::size_t part = std::min(size, PieceSize - within);
    Outcome outcome = Outcome::Done;
    const bool takesSpace = isInMemory_ && offset >= reserved_ && size >= LeastDirect;
    if (takesSpace || part == PieceSize) {
      part = takesSpace ? size : size & ~(PieceSize - 1);
      outcome = WriteDirect(offset, from, part);
    } else {
      outcome = Gather(offset, from, part);
    }
    if (outcome != Outcome::Done) return outcome;
    from += part;
    offset += part;
    size -= part;
  }
  return Outcome::Done;
}

Outcome GatheringFile::WriteZeros(std::uint64_t offset, std::uint64_t size) {
  if (isInMemory_) {
    const Outcome outcome = Take(std::max(offset, touched_), offset + size);
    if (outcome != Outcome::Done) return outcome;
  }
  if (offset >= touched_) return Outcome::Done;
  size = std::min(size, touched_ - offset);
  while (size > 0) {
    const std::size_t part = AtMost(sizeof Zeros, size);
    const Outcome outcome = Write(offset, Zeros, part);
    if (outcome != Outcome::Done) return outcome;
    offset += part;
    size -= part;
  }
  return Outcome::Done;
}

Outcome GatheringFile::Gather(std::uint64_t offset, const std::byte* data, std::size_t size) {
  const std::uint64_t pieceOffset = PieceOf(offset);
  const auto within = static_cast<std::size_t>(offset - pieceOffset);
  Piece* piece = Find(pieceOffset);
  if (piece == nullptr) {
    if (isInMemory_ && Take(pieceOffset, pieceOffset + PieceSize) != Outcome::Done) {
      return WriteDirect(offset, data, size);  // perhaps there is space for so much
    }
    const Outcome outcome = Begin(pieceOffset, &piece);
    if (outcome != Outcome::Done) return outcome;
    piece->begin = piece->end = within;
  }
  if (within > piece->end && pieceOffset + piece->end >= touched_) {
    std::memset(&piece->bytes[piece->end], 0, within - piece->end);
    piece->end = within;
  }
  if (within > piece->end || within + size < piece->begin) {
    const Outcome outcome = WriteOut(*piece);
    if (outcome != Outcome::Done) return outcome;
    piece->begin = piece->end = within;
  }
  std::memcpy(&piece->bytes[within], data, size);
  piece->begin = std::min(piece->begin, within);
  piece->end = std::max(piece->end, within + size);
  touched_ = std::max(touched_, offset + size);
  // A failure is reported now, but the piece stays and is tried again.
  if (piece->begin == 0 && piece->end == PieceSize) return WriteOut(*piece);
  return Outcome::Done;
}

GatheringFile::Piece* GatheringFile::Find(std::uint64_t pieceOffset) {
  for (Piece& piece : pieces_) {
    if (piece.offset == pieceOffset && piece.begin != piece.end) {
      piece.lastUse = ++clock_;
      return &piece;
    }
  }
  return nullptr;
}

/// Makes room for a new piece.
Outcome GatheringFile::Begin(std::uint64_t pieceOffset, Piece** piece) {
  Piece* oldest = &pieces_[0];
  for (Piece& candidate : pieces_) {
    if (candidate.lastUse < oldest->lastUse) oldest = &candidate;
  }
  const Outcome outcome = WriteOut(*oldest);
  if (outcome != Outcome::Done) return outcome;
  if (!oldest->bytes) {
    oldest->bytes.reset(new (std::nothrow) std::byte[PieceSize]);
    if (!oldest->bytes) return Outcome::NoMemory;
  }
  oldest->offset = pieceOffset;
  oldest->lastUse = ++clock_;
  *piece = oldest;
  return Outcome::Done;
}

Outcome GatheringFile::WriteOut(Piece& piece) {
  if (piece.begin == piece.end) return Outcome::Done;
  const int error = CurrentDisk().WriteAt(file_.Number(), piece.offset + piece.begin,
                                          &piece.bytes[piece.begin], piece.end - piece.begin);
  if (error != 0) return OutcomeOfWriting(error);
  piece.begin = piece.end = 0;
  piece.lastUse = 0;
  return Outcome::Done;
}

Outcome GatheringFile::WriteDirect(std::uint64_t offset, const std::byte* data, std::size_t size) {
  const std::uint64_t end = offset + size;
  const auto isCovered = [&](const Piece& piece) {
    return piece.offset + piece.begin >= offset && piece.offset + piece.end <= end;
  };
  for (Piece& piece : pieces_) {
    const bool isApart = piece.offset + piece.end <= offset || piece.offset + piece.begin >= end;
    if (isApart || isCovered(piece)) continue;
    const Outcome outcome = WriteOut(piece);
    if (outcome != Outcome::Done) return outcome;
  }
  // Also when the write fails: a part of it may be in the file.
  touched_ = std::max(touched_, end);
  const int error = CurrentDisk().WriteAt(file_.Number(), offset, data, size);
  if (error != 0) return OutcomeOfWriting(error);
  for (Piece& piece : pieces_) {
    if (isCovered(piece)) piece.begin = piece.end = 0;
  }
  return Outcome::Done;
}

Outcome GatheringFile::Read(std::uint64_t offset, void* data, std::size_t size) {
  auto* to = static_cast<std::byte*>(data);
  while (size > 0) {
    const std::size_t within = offset & (PieceSize - 1);
    const std::size_t part = std::min(size, PieceSize - within);
    const Piece* piece = Find(PieceOf(offset));
    const bool covered = piece != nullptr && within >= piece->begin && within + part <= piece->end;
    if (!covered) {
      const Outcome outcome = ReadDirect(offset, to, part);
      if (outcome != Outcome::Done) return outcome;
    }
    if (piece != nullptr) {
      const std::size_t begin = std::max(within, piece->begin);
      const std::size_t end = std::min(within + part, piece->end);
      if (begin < end) std::memcpy(to + (begin - within), &piece->bytes[begin], end - begin);
    }
    to += part;
    offset += part;
    size -= part;
  }
  return Outcome::Done;
}

Outcome GatheringFile::ReadDirect(std::uint64_t offset, std::byte* data, std::size_t size) {
  std::size_t got = 0;
  if (CurrentDisk().ReadAt(file_.Number(), offset, data, size, &got) != 0)
    return Outcome::ReadFailed;
  std::memset(data + got, 0, size - got);
  return Outcome::Done;
}

Outcome GatheringFile::Flush(std::uint64_t size) {
  for (Piece& piece : pieces_) {
    const Outcome outcome = WriteOut(piece);
    if (outcome != Outcome::Done) return outcome;
  }
  const int error = CurrentDisk().Cut(file_.Number(), size);
  if (error != 0) return OutcomeOfWriting(error);
  reserved_ = std::min(reserved_, size);
  touched_ = std::min(touched_, size);
  return Outcome::Done;
}

Outcome GatheringFile::Wait() {
  if (synced_ != Outcome::Done) return synced_;
  int error = CurrentDisk().Sync(file_.Number());
  if (error == 0 && !isNameOnDisk_) {
    error = CurrentDisk().SyncFolder(folder_.c_str());
    if (error == EACCES) error = 0;  // a folder that may not be read cannot be waited for
    isNameOnDisk_ = error == 0;
    // It was not even opened, so nothing is lost yet.
    if (error == EMFILE || error == ENFILE || error == ENOMEM) return OutcomeOfWriting(error);
  }
  if (error != 0) synced_ = OutcomeOfWriting(error);
  return synced_;
}

void GatheringFile::Close() {
  CurrentDisk().Unlock(file_.Number());
  file_.Close();
}
