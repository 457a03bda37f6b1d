#include "compound/sector_source.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

namespace {

constexpr std::uint8_t Signature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
/// Of the format before it was published.
constexpr std::uint8_t OldSignature[8] = {0x0E, 0x11, 0xFC, 0x0D, 0xD0, 0xCF, 0x11, 0x0E};
constexpr std::uint16_t LittleEndian = 0xFFFE;
constexpr std::uint32_t MiniCutoff = 4096;
constexpr unsigned SmallShift = 9;
constexpr unsigned LargeShift = 12;

Outcome OutcomeOfReading(int error, const char* path) {
  struct stat status = {};
  if (error == ENOENT) {
    const bool inFolder = CurrentDisk().StatusOf(FolderOf(path).c_str(), &status) == 0;
    return inFolder ? Outcome::NoSuchFile : Outcome::NoSuchPath;
  }
  return OutcomeOfOpening(error);
}

/// Opens a plain file for reading and locks it; tells its size in bytes.
Outcome OpenPlainFile(const char* path, bool exclusive, OpenFile* file, std::uint64_t* size) {
  Disk& disk = CurrentDisk();
  struct stat status = {};
  int error = disk.StatusOf(path, &status);
  if (error != 0) return OutcomeOfReading(error, path);
  // Opening a pipe would wait for its other end, and opening a device may do anything.
  if (!S_ISREG(status.st_mode)) return Outcome::AccessDenied;
  error = disk.Open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY, 0, file->Place());
  if (error != 0) return OutcomeOfReading(error, path);
  // A file system without locks has no other users that a lock could tell.
  if (disk.Lock(file->Number(), exclusive) == EWOULDBLOCK) return Outcome::InUse;
  if (disk.Status(file->Number(), &status) != 0) return Outcome::ReadFailed;
  if (!S_ISREG(status.st_mode)) return Outcome::AccessDenied;
  *size = static_cast<std::uint64_t>(status.st_size);
  return Outcome::Done;
}

bool Begins(const CompoundHeader& header, const std::uint8_t (&signature)[8]) {
  return std::memcmp(header.signature, signature, sizeof signature) == 0;
}

}  // namespace

Outcome SectorSource::Open(const char* path, bool exclusive) {
  Outcome outcome = OpenPlainFile(path, exclusive, &file_, &size_);
  if (outcome != Outcome::Done) return outcome;
  outcome = ReadFile(0, &header_, AtMost(sizeof header_, size_));
  if (outcome == Outcome::Done) outcome = CheckHeader();
  if (outcome != Outcome::Done) return outcome;
  // Relaxed: a file is to be whole sectors. Spreadsheet writers leave the last one unfilled; only
  // bytes that are asked for must be there. Behind the end anything may follow.
  const std::uint64_t sectors = ((size_ + SectorSize() - 1) >> SectorShift()) - 1;
  sectorCount_ = static_cast<std::uint32_t>(std::min<std::uint64_t>(sectors, MaxRegularSector));
  blocks_ = std::make_unique<std::byte[]>(BlockSize * BlockCount);
  std::fill(std::begin(held_), std::end(held_), NoBlock);
  return Outcome::Done;
}

Outcome SectorSource::LooksCompound(const char* path, bool* looks) {
  SectorSource source;
  Outcome outcome = OpenPlainFile(path, false, &source.file_, &source.size_);
  if (outcome == Outcome::Done && source.size_ >= sizeof Signature) {
    outcome = source.ReadFile(0, &source.header_, sizeof Signature);
  }
  *looks = outcome == Outcome::Done && Begins(source.header_, Signature);
  return outcome;
}

/// Looks only at what decides how the file is read. Relaxed: class identifier, reserved bytes and,
/// in version 3, the count of directory sectors are to be zero, and every other count is to be
/// right. Word 6 put its class identifier there, and rust-cfb up to 0.7 counted the sectors of the
/// mini FAT wrongly; a chain tells its own length.
Outcome SectorSource::CheckHeader() const {
  if (Begins(header_, OldSignature)) return Outcome::OldFormat;
  if (!Begins(header_, Signature)) return Outcome::NotCompound;
  if (size_ < sizeof header_ || header_.byteOrder != LittleEndian) return Outcome::BadHeader;
  if (header_.majorVersion < 3) return Outcome::OldFormat;
  if (header_.majorVersion > 4) return Outcome::NewerFormat;
  // Relaxed: version 3 is to have small sectors, and 4 large ones. POI writes large ones as
  // version 3.
  const bool known = header_.sectorShift == SmallShift || header_.sectorShift == LargeShift;
  const bool standard =
      header_.miniSectorShift == MiniSectorShift && header_.miniCutoff == MiniCutoff;
  return known && standard && size_ > SectorSize() ? Outcome::Done : Outcome::BadHeader;
}

Outcome SectorSource::ReadFile(std::uint64_t offset, void* data, std::size_t size) {
  std::size_t got = 0;
  const int error = CurrentDisk().ReadAt(file_.Number(), offset, data, size, &got);
  return error == 0 && got == size ? Outcome::Done : Outcome::ReadFailed;
}

Outcome SectorSource::BlockAt(std::uint64_t offset, const std::byte** block) {
  const std::uint64_t number = offset / BlockSize;
  const auto place = static_cast<std::size_t>((number * 0x9E3779B97F4A7C15U) >> 60);
  static_assert(BlockCount == 16);
  std::byte* bytes = &blocks_[place * BlockSize];
  if (held_[place] != number) {
    held_[place] = NoBlock;
    const std::uint64_t begin = number * BlockSize;
    const std::size_t size = AtMost(BlockSize, size_ - std::min(size_, begin));
    const Outcome outcome = ReadFile(begin, bytes, size);
    if (outcome != Outcome::Done) return outcome;
    std::memset(bytes + size, 0xFF, BlockSize - size);
    held_[place] = number;
  }
  *block = bytes;
  return Outcome::Done;
}

Outcome SectorSource::Read(std::uint64_t offset, void* data, std::size_t size) {
  if (offset > size_ || size > size_ - offset) return Outcome::Corrupt;
  if (size >= BlockSize) return ReadFile(offset, data, size);
  auto* to = static_cast<std::byte*>(data);
  while (size > 0) {
    const std::byte* block = nullptr;
    const Outcome outcome = BlockAt(offset, &block);
    if (outcome != Outcome::Done) return outcome;
    const std::size_t within = offset % BlockSize;
    const std::size_t part = std::min(size, BlockSize - within);
    std::memcpy(to, block + within, part);
    to += part;
    offset += part;
    size -= part;
  }
  return Outcome::Done;
}

// A child process may hold the file open, too; the lock goes all the same.
void SectorSource::Close() {
  if (file_.IsOpen()) CurrentDisk().Unlock(file_.Number());
  file_.Close();
}

Outcome SectorSource::Look(std::uint32_t sector, const std::byte** bytes) {
  if (sector >= sectorCount_) return Outcome::Corrupt;
  const std::uint64_t offset = OffsetOf(sector);
  const Outcome outcome = BlockAt(offset, bytes);
  if (outcome == Outcome::Done) *bytes += offset % BlockSize;
  return outcome;
}
