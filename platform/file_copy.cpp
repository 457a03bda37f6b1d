#include "platform/file_copy.h"

#ifndef _WIN32

#include <fcntl.h>

#include <cerrno>
#include <cstddef>

#include "compound/disk.h"

namespace {

/// Copies up to the end of the file, which must not come before `size` bytes.
int CopyBytes(int from, std::uint64_t size, int to) {
  std::byte piece[64 * 1024];
  for (std::uint64_t offset = 0;;) {
    std::size_t got = 0;
    int error = CurrentDisk().ReadAt(from, offset, piece, sizeof piece, &got);
    if (error == 0 && got > 0) error = CurrentDisk().WriteAt(to, offset, piece, got);
    if (error != 0) return error;
    if (got == 0) return offset < size ? EIO : 0;
    offset += got;
  }
}

/// Writes a complete copy of `source` into the new file `copy`, safely on the disk.
int Fill(int source, const struct stat& status, int copy) {
  int error = CopyBytes(source, static_cast<std::uint64_t>(status.st_size), copy);
  if (error == 0) error = CurrentDisk().SetAttributes(copy, status);
  return error != 0 ? error : CurrentDisk().Sync(copy);
}

/// Makes `to` a complete copy, safely on the disk with its name.
int Copy(int source, const struct stat& status, const std::string& to) {
  Disk& disk = CurrentDisk();
  const std::string folder = FolderOf(to);
  std::string name;
  OpenFile copy;
  int error = disk.OpenUnseen(folder.c_str(), copy.Place(), &name);
  if (error != 0) return error;
  error = Fill(source, status, copy.Number());
  if (error == 0) error = disk.Show(copy.Number(), name.c_str(), to.c_str());
  if (error != 0) {
    if (!name.empty()) disk.Remove(name.c_str());
    return error;
  }
  error = disk.SyncFolder(folder.c_str());
  if (error != 0) disk.Remove(to.c_str());
  return error;
}

}  // namespace

int MoveByCopying(const std::string& from, const std::string& to) {
  Disk& disk = CurrentDisk();
  OpenFile source;
  struct stat status;
  int error = disk.Open(from.c_str(), O_RDONLY | O_NONBLOCK, 0, source.Place());
  if (error == 0) error = disk.Status(source.Number(), &status);
  if (error != 0) return error;
  if (!S_ISREG(status.st_mode)) return EXDEV;
  // Before the work, not only after it.
  struct stat other;
  if (disk.StatusOfLink(to.c_str(), &other) == 0) return EEXIST;
  error = Copy(source.Number(), status, to);
  if (error != 0) return error;
  error = disk.Remove(from.c_str());
  if (error == 0) return 0;
  // The copy may go only if the file is certainly still there; else it may be all there is.
  const int look = disk.StatusOfLink(from.c_str(), &other);
  if (look == 0) disk.Remove(to.c_str());
  return look == ENOENT ? 0 : error;
}

#endif
