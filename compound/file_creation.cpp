#include "compound/file_creation.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

namespace {

/// Opens the file; `*isNew` tells whether that made it.
int OpenOrMake(const char* path, bool exists, OpenFile* file, bool* isNew) {
  constexpr int Flags = O_RDWR | O_CREAT;
  Disk& disk = CurrentDisk();
  *isNew = false;
  if (!exists) {
    const int error = disk.Open(path, Flags | O_EXCL, 0666, file->Place());
    *isNew = error == 0;
    if (error != EEXIST) return error;
  }
  return disk.Open(path, Flags, 0666, file->Place());
}

/// Writes the first `size` bytes over themselves: what keeps them from being written (a limit, a
/// quota, a disk that copies on writing) shows while they are still there.
int Rewrite(int file, std::uint64_t size) {
  std::byte bytes[4096];
  for (std::uint64_t at = 0; at < size;) {
    std::size_t got = 0;
    const std::size_t part = AtMost(sizeof bytes, size - at);
    int error = CurrentDisk().ReadAt(file, at, bytes, part, &got);
    if (error == 0) error = CurrentDisk().WriteAt(file, at, bytes, got);
    if (error != 0 || got == 0) return error;
    at += got;
  }
  return 0;
}

/// Takes the file's space and gives it its length. What an old file has of the space it keeps, as
/// others could take what is given back; what it lacks is taken behind its end. Cutting it is the
/// one step that loses anything of it, and the last one that may fail.
Outcome Empty(int file, const char* path, std::uint64_t space) {
  Disk& disk = CurrentDisk();
  struct stat status = {};
  struct stat named = {};
  if (disk.Lock(file, true) == EWOULDBLOCK) return Outcome::InUse;
  int error = disk.Status(file, &status);
  if (error == 0) error = disk.StatusOf(path, &named);
  // Who has moved the file since it was opened is saving, too, and it is that save's backup.
  if (error == ENOENT || (error == 0 && !IsSameFile(status, named))) return Outcome::InUse;
  if (error != 0) return OutcomeOfWriting(error);
  const auto before = static_cast<std::uint64_t>(status.st_size);
  const std::uint64_t kept = std::min(before, space);
  error = Rewrite(file, kept);
  if (error == 0 && kept < space) {
    error = disk.TakeSpace(file, kept, space, Disk::Length::Keep);
  }
  if (error == 0) error = disk.Cut(file, space);
  if (error == 0) {
    // Should this process be killed, the old header is not to make a file of what is left.
    constexpr std::byte NoSignature[8] = {};
    if (kept > 0) disk.WriteAt(file, 0, NoSignature, sizeof NoSignature);
    return Outcome::Done;
  }
  if (kept < space) disk.Cut(file, before);  // gives back what was taken
  return OutcomeOfWriting(error);
}

/// Whether nobody has saved into a file since this process made it, nor moved it away. Between its
/// making and its lock, another one may have done both.
bool IsUntouched(int file, const char* path) {
  struct stat status = {};
  struct stat named = {};
  return CurrentDisk().Status(file, &status) == 0 && status.st_size == 0 &&
         CurrentDisk().StatusOf(path, &named) == 0 && IsSameFile(status, named);
}

}  // namespace

Outcome OpenEmpty(const char* path, std::uint64_t space, OpenFile* file, std::string* folder) {
  Disk& disk = CurrentDisk();
  struct stat status = {};
  std::string name;
  int error = FollowLinks(path, &name);
  *folder = FolderOf(name);  // while lack of memory for it does no harm
  if (error == 0) error = disk.StatusOf(name.c_str(), &status);
  const bool exists = error == 0;
  if (!exists && error != ENOENT) return OutcomeOfOpening(error);
  if (exists && (!S_ISREG(status.st_mode) || (status.st_mode & S_IWUSR) == 0)) {
    return Outcome::AccessDenied;
  }
  bool isNew = false;
  error = OpenOrMake(name.c_str(), exists, file, &isNew);
  if (error != 0) return OutcomeOfOpening(error);
  const Outcome outcome = Empty(file->Number(), name.c_str(), space);
  if (outcome != Outcome::Done) {
    // Who holds the lock on a file this new is saving a scene into it.
    if (isNew && outcome != Outcome::InUse && IsUntouched(file->Number(), name.c_str())) {
      disk.Remove(name.c_str());
    }
    file->Close();
  }
  return outcome;
}
