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

struct ErrorCode {
  int error;
  HRESULT result;
};

constexpr ErrorCode OpenErrors[] = {
    {ENOTDIR, STG_E_PATHNOTFOUND},    {ENAMETOOLONG, STG_E_INVALIDNAME},
    {EMFILE, STG_E_TOOMANYOPENFILES}, {ENFILE, STG_E_TOOMANYOPENFILES},
    {ENOMEM, E_OUTOFMEMORY},
};

HRESULT OpenResult(int error, const char* path) {
  struct stat status = {};
  if (error == ENOENT) {
    const bool inFolder = CurrentDisk().StatusOf(FolderOf(path).c_str(), &status) == 0;
    return inFolder ? STG_E_FILENOTFOUND : STG_E_PATHNOTFOUND;
  }
  for (const ErrorCode& row : OpenErrors) {
    if (row.error == error) return row.result;
  }
  return STG_E_ACCESSDENIED;
}

/// Opens a plain file for reading and locks it; tells its size in bytes.
HRESULT OpenPlainFile(const char* path, bool exclusive, OpenFile* file, std::uint64_t* size) {
  Disk& disk = CurrentDisk();
  struct stat status = {};
  int error = disk.StatusOf(path, &status);
  if (error != 0) return OpenResult(error, path);
  // Opening a pipe would wait for its other end, and opening a device may do anything.
  if (!S_ISREG(status.st_mode)) return STG_E_ACCESSDENIED;
  error = disk.Open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY, 0, file->Place());
  if (error != 0) return OpenResult(error, path);
  // A file system without locks has no other users that a lock could tell.
  if (disk.Lock(file->Number(), exclusive) == EWOULDBLOCK) return STG_E_SHAREVIOLATION;
  if (disk.Status(file->Number(), &status) != 0) return STG_E_READFAULT;
  if (!S_ISREG(status.st_mode)) return STG_E_ACCESSDENIED;
  *size = static_cast<std::uint64_t>(status.st_size);
  return S_OK;
}

bool Begins(const CompoundHeader& header, const std::uint8_t (&signature)[8]) {
  return std::memcmp(header.signature, signature, sizeof signature) == 0;
}

}  // namespace

HRESULT SectorSource::Open(const char* path, bool exclusive) {
  HRESULT result = OpenPlainFile(path, exclusive, &file_, &size_);
  if (FAILED(result)) return result;
  result = ReadFile(0, &header_, std::min<std::uint64_t>(size_, sizeof header_));
  if (SUCCEEDED(result)) result = CheckHeader();
  if (FAILED(result)) return result;
  // Deliberate: a file may end within its last sector. Writers that do not fill it up leave such
  // files, and so does whoever cuts off the zeros; only bytes that are asked for must be there.
  const std::uint64_t sectors = ((size_ + SectorSize() - 1) >> SectorShift()) - 1;
  sectorCount_ = static_cast<std::uint32_t>(std::min<std::uint64_t>(sectors, MaxRegularSector));
  blocks_ = std::make_unique<std::byte[]>(BlockSize * BlockCount);
  std::fill(std::begin(held_), std::end(held_), NoBlock);
  return S_OK;
}

HRESULT SectorSource::LooksCompound(const char* path) {
  SectorSource source;
  HRESULT result = OpenPlainFile(path, false, &source.file_, &source.size_);
  if (SUCCEEDED(result) && source.size_ >= sizeof Signature) {
    result = source.ReadFile(0, &source.header_, sizeof Signature);
  }
  if (FAILED(result)) return result;
  return Begins(source.header_, Signature) ? S_OK : S_FALSE;
}

/// Only what decides how the file is read. Not looked at: the minor version and the class
/// identifier (word processors of the nineties put theirs there), the reserved bytes, the
/// transaction number, and every count of sectors, as a chain tells its own length: libraries have
/// written files with a wrong count of mini FAT sectors and, in version 3, of directory sectors.
HRESULT SectorSource::CheckHeader() const {
  if (Begins(header_, OldSignature)) return STG_E_OLDFORMAT;
  if (!Begins(header_, Signature)) return STG_E_FILEALREADYEXISTS;
  if (size_ < sizeof header_ || header_.byteOrder != LittleEndian) return STG_E_INVALIDHEADER;
  if (header_.majorVersion < 3) return STG_E_OLDFORMAT;
  if (header_.majorVersion > 4) return STG_E_OLDDLL;
  // Version 3 should mean small sectors and 4 large ones; libgsf writes large ones as version 3.
  const bool known = header_.sectorShift == SmallShift || header_.sectorShift == LargeShift;
  const bool standard =
      header_.miniSectorShift == MiniSectorShift && header_.miniCutoff == MiniCutoff;
  return known && standard && size_ > SectorSize() ? S_OK : STG_E_INVALIDHEADER;
}

HRESULT SectorSource::ReadFile(std::uint64_t offset, void* data, std::size_t size) {
  std::size_t got = 0;
  const int error = CurrentDisk().ReadAt(file_.Number(), offset, data, size, &got);
  return error == 0 && got == size ? S_OK : STG_E_READFAULT;
}

HRESULT SectorSource::BlockAt(std::uint64_t offset, const std::byte** block) {
  const std::uint64_t number = offset / BlockSize;
  const std::size_t place = (number * 0x9E3779B97F4A7C15U) >> 60;
  static_assert(BlockCount == 16);
  std::byte* bytes = &blocks_[place * BlockSize];
  if (held_[place] != number) {
    held_[place] = NoBlock;
    const std::uint64_t begin = number * BlockSize;
    const std::size_t size = std::min<std::uint64_t>(BlockSize, size_ - std::min(size_, begin));
    const HRESULT result = ReadFile(begin, bytes, size);
    if (FAILED(result)) return result;
    std::memset(bytes + size, 0xFF, BlockSize - size);
    held_[place] = number;
  }
  *block = bytes;
  return S_OK;
}

HRESULT SectorSource::Read(std::uint64_t offset, void* data, std::size_t size) {
  if (offset > size_ || size > size_ - offset) return STG_E_DOCFILECORRUPT;
  if (size >= BlockSize) return ReadFile(offset, data, size);
  auto* to = static_cast<std::byte*>(data);
  while (size > 0) {
    const std::byte* block = nullptr;
    const HRESULT result = BlockAt(offset, &block);
    if (FAILED(result)) return result;
    const std::size_t within = offset % BlockSize;
    const std::size_t part = std::min(size, BlockSize - within);
    std::memcpy(to, block + within, part);
    to += part;
    offset += part;
    size -= part;
  }
  return S_OK;
}

HRESULT SectorSource::Look(std::uint32_t sector, const std::byte** bytes) {
  if (sector >= sectorCount_) return STG_E_DOCFILECORRUPT;
  const std::uint64_t offset = OffsetOf(sector);
  const HRESULT result = BlockAt(offset, bytes);
  if (SUCCEEDED(result)) *bytes += offset % BlockSize;
  return result;
}
