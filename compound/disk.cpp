#include "compound/disk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>

namespace {

alignas(4096) constexpr std::byte Zeros[64 * 1024] = {};

struct ErrorCode {
  int error;
  HRESULT result;
};

constexpr ErrorCode WriteErrors[] = {
    {ENOSPC, STG_E_MEDIUMFULL},
    {EDQUOT, STG_E_MEDIUMFULL},
    {EFBIG, STG_E_MEDIUMFULL},
    {ENOMEM, E_OUTOFMEMORY},
};

constexpr ErrorCode OpenErrors[] = {
    {ENOENT, STG_E_PATHNOTFOUND},      {ENOTDIR, STG_E_PATHNOTFOUND},
    {ENAMETOOLONG, STG_E_INVALIDNAME}, {EMFILE, STG_E_TOOMANYOPENFILES},
    {ENFILE, STG_E_TOOMANYOPENFILES},  {ENOSPC, STG_E_MEDIUMFULL},
    {EDQUOT, STG_E_MEDIUMFULL},        {ENOMEM, E_OUTOFMEMORY},
};

template <std::size_t Size>
HRESULT ResultOf(int error, const ErrorCode (&table)[Size], HRESULT otherwise) {
  for (const ErrorCode& row : table) {
    if (row.error == error) return row.result;
  }
  return otherwise;
}

/// While it lives, growing beyond the process's file-size limit is an error (EFBIG) and does not
/// raise SIGXFSZ in a host that has not asked for it.
class FileSizeSignalBlocked {
 public:
  FileSizeSignalBlocked() {
    sigemptyset(&signals);
    sigaddset(&signals, SIGXFSZ);
    sigset_t pending;
    sigpending(&pending);
    wasPending = sigismember(&pending, SIGXFSZ) == 1;
    pthread_sigmask(SIG_BLOCK, &signals, &before);
  }
  ~FileSizeSignalBlocked() {
    const timespec now = {0, 0};
    const int error = errno;
    while (!wasPending && sigtimedwait(&signals, nullptr, &now) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
  }
  FileSizeSignalBlocked(const FileSizeSignalBlocked&) = delete;
  FileSizeSignalBlocked& operator=(const FileSizeSignalBlocked&) = delete;

 private:
  sigset_t signals;
  sigset_t before;
  bool wasPending;
};

/// Opens the file; `*isNew` tells whether that made it.
int OpenOrMake(const char* path, bool exists, bool* isNew) {
  constexpr int Flags = O_RDWR | O_CREAT | O_CLOEXEC;
  const int made = exists ? -1 : open(path, Flags | O_EXCL, 0666);
  *isNew = made >= 0;
  if (exists || (made < 0 && errno == EEXIST)) return open(path, Flags, 0666);
  return made;
}

bool WriteZeros(int file, std::uint64_t from, std::uint64_t to) {
  while (from < to) {
    const std::size_t size = std::min<std::uint64_t>(to - from, sizeof Zeros);
    if (!WriteAll(file, Zeros, size, from)) return false;
    from += size;
  }
  return true;
}

/// Writes the first `size` bytes over themselves: what keeps them from being written (a limit, a
/// quota, a disk that copies on writing) shows while they are still there.
bool Rewrite(int file, std::uint64_t size) {
  const FileSizeSignalBlocked blocked;
  std::byte bytes[4096];
  for (std::uint64_t at = 0; at < size;) {
    const std::size_t part = std::min<std::uint64_t>(size - at, sizeof bytes);
    const ssize_t got = pread(file, bytes, part, static_cast<off_t>(at));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!WriteAll(file, bytes, static_cast<std::size_t>(got), at)) return false;
    at += static_cast<std::uint64_t>(got);
  }
  return true;
}

/// Empties the file and takes its space. What an old file has of it, it keeps, as others could
/// take what is given back; what it lacks is taken before anything of it is lost.
HRESULT Empty(int file, std::uint64_t space) {
  struct stat status = {};
  if (flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return STG_E_SHAREVIOLATION;
  if (fstat(file, &status) != 0) return STG_E_WRITEFAULT;
  const auto before = static_cast<std::uint64_t>(status.st_size);
  const std::uint64_t kept = std::min(before, space);
  if (!Rewrite(file, kept) || (kept < space && !TakeSpace(file, kept, space))) {
    const HRESULT result = WriteResult(errno);
    return CutFile(file, before) ? result : STG_E_WRITEFAULT;
  }
  return CutFile(file, space) && WriteZeros(file, 0, kept) ? S_OK : WriteResult(errno);
}

}  // namespace

HRESULT WriteResult(int error) { return ResultOf(error, WriteErrors, STG_E_WRITEFAULT); }

HRESULT OpenEmpty(const char* path, std::uint64_t space, int* descriptor) {
  struct stat status = {};
  const bool exists = stat(path, &status) == 0;
  if (exists && (!S_ISREG(status.st_mode) || (status.st_mode & S_IWUSR) == 0)) {
    return STG_E_ACCESSDENIED;
  }
  bool isNew = false;
  const int opened = OpenOrMake(path, exists, &isNew);
  if (opened < 0) return ResultOf(errno, OpenErrors, STG_E_ACCESSDENIED);
  const HRESULT result = Empty(opened, space);
  if (FAILED(result)) {
    // Who holds the lock on a file this new is saving a scene into it.
    if (isNew && result != STG_E_SHAREVIOLATION) unlink(path);
    close(opened);
    return result;
  }
  *descriptor = opened;
  return S_OK;
}

bool WriteAll(int descriptor, const std::byte* data, std::size_t size, std::uint64_t offset) {
  while (size > 0) {
    const ssize_t written = pwrite(descriptor, data, size, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written == 0) errno = EIO;
    if (written <= 0) return false;
    data += written;
    size -= static_cast<std::size_t>(written);
    offset += static_cast<std::uint64_t>(written);
  }
  return true;
}

bool TakeSpace(int descriptor, std::uint64_t from, std::uint64_t to) {
  const FileSizeSignalBlocked blocked;
  int result = 0;
  do {
    result = fallocate(descriptor, 0, static_cast<off_t>(from), static_cast<off_t>(to - from));
  } while (result != 0 && errno == EINTR);
  if (result == 0) return true;
  if (errno != EOPNOTSUPP && errno != ENOSYS) return false;
  return WriteZeros(descriptor, from, to);
}

bool CutFile(int descriptor, std::uint64_t size) {
  while (ftruncate(descriptor, static_cast<off_t>(size)) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

bool SyncFile(int descriptor) {
  while (fdatasync(descriptor) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

void UnlockFile(int descriptor) { flock(descriptor, LOCK_UN); }
