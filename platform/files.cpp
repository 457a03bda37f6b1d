#include "platform/files.h"

#ifndef _WIN32

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>

#include "platform/file_copy.h"
#include "platform/native_path.h"

namespace {

constexpr int WriteBit = 0x80;    // in a mode of _chmod
constexpr int WriteAccess = 0x2;  // in a mode of _access
constexpr mode_t EveryonesWrite = S_IWUSR | S_IWGRP | S_IWOTH;

int Refuse(int error) {
  errno = error;
  return -1;
}

bool IsReadOnly(const struct stat& status) {
  return !S_ISDIR(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

enum class Use { None, Shared, Exclusive };

/// Who has the file open, here or in another process, which is told by locks: a storage that is
/// written has it alone, those that read it share it.
Use UseOf(const char* path) {
  const int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return Use::None;
  const auto isRefused = [&](int lock) {
    return flock(file, lock | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  };
  const Use use = isRefused(LOCK_SH)   ? Use::Exclusive
                  : isRefused(LOCK_EX) ? Use::Shared
                                       : Use::None;
  close(file);
  return use;
}

/// Renames without replacing. Where the file system cannot promise that in one step, the test
/// comes first and another process could still slip in between.
int RenameToNewName(const char* from, const char* to) {
#ifdef RENAME_NOREPLACE
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
#endif
  struct stat existing;
  if (lstat(to, &existing) == 0) return Refuse(EEXIST);
  return std::rename(from, to);
}

unsigned char Folded(unsigned char byte) {
  const bool capital = byte >= 'A' && byte <= 'Z';
  return static_cast<unsigned char>(capital ? byte - 'A' + 'a' : byte);
}

}  // namespace

namespace files {

int _access(const char* path, int mode) {
  if (path == nullptr) return Refuse(EINVAL);
  struct stat status;
  if (stat(NativePath(path).Text(), &status) != 0) return -1;
  return (mode & WriteAccess) != 0 && IsReadOnly(status) ? Refuse(EACCES) : 0;
}

int _chmod(const char* path, int mode) {
  if (path == nullptr) return Refuse(EINVAL);
  const NativePath native(path);
  struct stat status;
  if (stat(native.Text(), &status) != 0) return -1;
  if (S_ISDIR(status.st_mode)) return 0;
  const mode_t old = status.st_mode & 07777U;
  const mode_t wanted = (mode & WriteBit) != 0 ? old | S_IWUSR : old & ~EveryonesWrite;
  return wanted == old ? 0 : chmod(native.Text(), wanted);
}

int remove(const char* path) {
  if (path == nullptr) return Refuse(EINVAL);
  const NativePath native(path);
  struct stat status;
  if (lstat(native.Text(), &status) != 0) return -1;
  if (IsReadOnly(status)) return Refuse(EACCES);
  // A save that failed deletes its file though the host may have kept the storage.
  const bool isRead = S_ISREG(status.st_mode) && UseOf(native.Text()) == Use::Shared;
  if (isRead) return Refuse(EACCES);
  return unlink(native.Text());
}

int rename(const char* from, const char* to) {
  if (from == nullptr || to == nullptr) return Refuse(EINVAL);
  const NativePath source(from);
  const NativePath target(to);
  if (UseOf(source.Text()) != Use::None) return Refuse(EACCES);
  if (RenameToNewName(source.Text(), target.Text()) == 0) return 0;
  return errno == EXDEV ? MoveByCopying(source, target) : -1;
}

int _mbsnbicmp(const unsigned char* a, const unsigned char* b, std::size_t count) {
  if (a == nullptr || b == nullptr) return INT_MAX;
  for (; count > 0; --count, ++a, ++b) {
    const int difference = Folded(*a) - Folded(*b);
    if (difference != 0 || *a == 0) return difference;
  }
  return 0;
}

}  // namespace files

#endif
