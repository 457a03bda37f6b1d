#include "compound/disk.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

alignas(4096) constexpr std::byte Zeros[64 * 1024] = {};

int ErrorOf(int result) { return result == 0 ? 0 : errno; }

/// Makes a call until no signal interrupts it; 0 or its errno.
template <class Call>
int Repeat(const Call& call) {
  while (call() < 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

/// While it lives, growing beyond the process's file-size limit is an error (EFBIG) and does not
/// raise SIGXFSZ in a host that has not asked for it. Without a limit there is nothing to block,
/// which saves a large write 2 % of its time.
class FileSizeSignalBlocked {
 public:
  FileSizeSignalBlocked() {
    rlimit limit = {};
    isLimited_ = getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
    if (!isLimited_) return;
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGXFSZ);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGXFSZ) == 1;
    pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  }
  ~FileSizeSignalBlocked() {
    if (!isLimited_) return;
    const timespec now = {0, 0};
    const int error = errno;
    while (!wasPending_ && sigtimedwait(&signals_, nullptr, &now) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }
  FileSizeSignalBlocked(const FileSizeSignalBlocked&) = delete;
  FileSizeSignalBlocked& operator=(const FileSizeSignalBlocked&) = delete;

 private:
  sigset_t signals_;
  sigset_t before_;
  bool wasPending_ = false;
  bool isLimited_ = false;
};

class TheSystemsDisk final : public Disk {
 public:
  int Open(const char* path, int flags, mode_t permissions, int* file) override {
    return Repeat([&] { return *file = open(path, flags | O_CLOEXEC, permissions); });
  }

  int OpenUnseen(const char* folder, int* file, std::string* name) override {
    name->clear();
    // Without /proc it could not be given a name.
    const bool canShow = access("/proc/self/fd", X_OK) == 0;
    const int error = canShow ? Open(folder, O_TMPFILE | O_RDWR, 0600, file) : EOPNOTSUPP;
    // What a file system or a kernel says that does not know such files.
    if (error != EOPNOTSUPP && error != EISDIR && error != ENOENT && error != EINVAL) return error;
    *name = std::string(folder) + "/.kelsave-XXXXXX";
    *file = mkostemp(name->data(), O_CLOEXEC);
    return *file < 0 ? errno : 0;
  }

  int Show(int file, const char* name, const char* newName) override {
    if (*name != '\0') return Rename(name, newName);
    char self[40];
    std::snprintf(self, sizeof self, "/proc/self/fd/%d", file);
    return ErrorOf(linkat(AT_FDCWD, self, AT_FDCWD, newName, AT_SYMLINK_FOLLOW));
  }

  int Close(int file) override { return ErrorOf(close(file)); }

  int Lock(int file, bool exclusive) override {
    return Repeat([&] { return flock(file, (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB); });
  }

  int Unlock(int file) override { return ErrorOf(flock(file, LOCK_UN)); }

  int Status(int file, struct stat* status) override { return ErrorOf(fstat(file, status)); }

  int ReadAt(int file, std::uint64_t offset, void* data, std::size_t size,
             std::size_t* got) override {
    auto* to = static_cast<std::byte*>(data);
    for (*got = 0; *got < size;) {
      const ssize_t read = pread(file, to + *got, size - *got, static_cast<off_t>(offset + *got));
      if (read < 0 && errno == EINTR) continue;
      if (read <= 0) return read == 0 ? 0 : errno;
      *got += static_cast<std::size_t>(read);
    }
    return 0;
  }

  int WriteAt(int file, std::uint64_t offset, const void* data, std::size_t size) override {
    const FileSizeSignalBlocked blocked;
    return WriteAll(file, offset, static_cast<const std::byte*>(data), size);
  }

  int TakeSpace(int file, std::uint64_t from, std::uint64_t to, Length length) override {
    const FileSizeSignalBlocked blocked;
    const int mode = length == Length::Keep ? FALLOC_FL_KEEP_SIZE : 0;
    const int error = Repeat([&] {
      return fallocate(file, mode, static_cast<off_t>(from), static_cast<off_t>(to - from));
    });
    if (error != EOPNOTSUPP && error != ENOSYS) return error;
    while (from < to) {
      const std::size_t part = AtMost(sizeof Zeros, to - from);
      const int written = WriteAll(file, from, Zeros, part);
      if (written != 0) return written;
      from += part;
    }
    return 0;
  }

  bool IsInMemory(int file) override {
    struct statfs status;
    return fstatfs(file, &status) == 0 && status.f_type == TMPFS_MAGIC;
  }

  int Cut(int file, std::uint64_t size) override {
    const FileSizeSignalBlocked blocked;
    return Repeat([&] { return ftruncate(file, static_cast<off_t>(size)); });
  }

  int Sync(int file) override {
    return Repeat([&] { return fsync(file); });
  }

  int SetAttributes(int file, const struct stat& status) override {
    const timespec times[2] = {status.st_atim, status.st_mtim};
    // Keeping the owner is often forbidden.
    if (fchown(file, status.st_uid, status.st_gid) != 0) errno = 0;
    const int error = ErrorOf(fchmod(file, status.st_mode & 07777U));
    return error != 0 ? error : ErrorOf(futimens(file, times));
  }

  int StatusOf(const char* path, struct stat* status) override {
    return ErrorOf(stat(path, status));
  }

  int StatusOfLink(const char* path, struct stat* status) override {
    return ErrorOf(lstat(path, status));
  }

  int ReadLink(const char* path, std::string* target) override {
    char text[PATH_MAX];
    const ssize_t size = readlink(path, text, sizeof text);
    if (size < 0) return errno;
    target->assign(text, static_cast<std::size_t>(size));
    return 0;
  }

  int SetPermissions(const char* path, mode_t permissions) override {
    return ErrorOf(chmod(path, permissions));
  }

  int Rename(const char* from, const char* to) override {
#ifdef RENAME_NOREPLACE
    const int error = ErrorOf(renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE));
    if (error != EINVAL && error != ENOSYS) return error;
#endif
    struct stat existing;
    return lstat(to, &existing) == 0 ? EEXIST : ErrorOf(std::rename(from, to));
  }

  int Remove(const char* path) override { return ErrorOf(unlink(path)); }

  int SyncFolder(const char* folder) override {
    int file = -1;
    int error = Open(folder, O_RDONLY | O_DIRECTORY, 0, &file);
    if (error != 0) return error;
    error = Sync(file);
    close(file);
    return error == EINVAL ? 0 : error;  // a file system that has nothing to wait for
  }

 private:
  static int WriteAll(int file, std::uint64_t offset, const std::byte* data, std::size_t size) {
    while (size > 0) {
      const ssize_t written = pwrite(file, data, size, static_cast<off_t>(offset));
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return written == 0 ? EIO : errno;
      data += written;
      size -= static_cast<std::size_t>(written);
      offset += static_cast<std::uint64_t>(written);
    }
    return 0;
  }
};

Disk* inUse = nullptr;

}  // namespace

Disk& SystemDisk() {
  static TheSystemsDisk disk;
  return disk;
}

Disk& CurrentDisk() { return inUse != nullptr ? *inUse : SystemDisk(); }

void UseDisk(Disk* disk) { inUse = disk; }

int* OpenFile::Place() {
  Close();
  return &number_;
}

int OpenFile::Close() {
  if (number_ < 0) return 0;
  const int file = number_;
  number_ = -1;
  return CurrentDisk().Close(file);
}

int FollowLinks(const std::string& path, std::string* name) {
  constexpr int LongestChain = 40;  // as the kernel counts
  *name = path;
  for (int followed = 0; followed < LongestChain; ++followed) {
    struct stat status;
    const int error = CurrentDisk().StatusOfLink(name->c_str(), &status);
    if (error != 0) return error == ENOENT ? 0 : error;
    if (!S_ISLNK(status.st_mode)) return 0;
    std::string target;
    const int unread = CurrentDisk().ReadLink(name->c_str(), &target);
    if (unread != 0) return unread;
    *name = target[0] == '/' ? target : FolderOf(*name) + "/" + target;
  }
  return ELOOP;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}
