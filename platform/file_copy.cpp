#include "platform/file_copy.h"

#ifndef _WIN32

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t PieceSize = 64 * 1024;

/// An open file, closed at the end of its life without disturbing errno.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    const int error = errno;
    if (number_ >= 0) close(number_);
    errno = error;
  }
  int Get() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

int Refuse(int error) {
  errno = error;
  return -1;
}

bool Exists(const NativePath& path) {
  struct stat status;
  return lstat(path.Text(), &status) == 0;
}

bool WriteAll(int file, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(file, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

bool CopyBytes(int from, int to) {
  char piece[PieceSize];
  for (;;) {
    const ssize_t got = read(from, piece, sizeof piece);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!WriteAll(to, piece, static_cast<std::size_t>(got))) return false;
  }
}

/// The owner is kept where that is allowed; that it is not must not stop the move.
bool CopyAttributes(const struct stat& status, int to) {
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (fchown(to, status.st_uid, status.st_gid) != 0) errno = 0;
  return fchmod(to, status.st_mode & 07777U) == 0 && futimens(to, times) == 0;
}

NativePath FolderOf(const NativePath& path) {
  NativePath folder = path;
  folder.LeaveFolder();
  return folder;
}

bool SyncFolder(const NativePath& folder) {
  const Descriptor opened(open(folder.Text(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return opened.IsOpen() && (fsync(opened.Get()) == 0 || errno == EINVAL);
}

int Abandon(const NativePath& unwanted) {
  const int error = errno;
  unlink(unwanted.Text());
  errno = error;
  return -1;
}

/// Writes a complete copy of `source` into the new file `copy`, safely on the disk.
bool FillCopy(int source, const struct stat& status, int copy) {
  return CopyBytes(source, copy) && CopyAttributes(status, copy) && fsync(copy) == 0;
}

/// The name by which the system knows an open file, whether or not it has another.
struct OpenFileName {
  char text[40];
  explicit OpenFileName(int file) { std::snprintf(text, sizeof text, "/proc/self/fd/%d", file); }
};

/// A file without a name in `folder`; closed where there can be none, or none that gets a name.
int OpenNameless(const NativePath& folder) {
#ifdef O_TMPFILE
  const int file = open(folder.Text(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
  if (file < 0 || access(OpenFileName(file).text, F_OK) == 0) return file;
  close(file);
#endif
  return -1;
}

int CopyWithoutName(int source, const struct stat& status, int copy, const NativePath& to) {
  if (!FillCopy(source, status, copy)) return -1;
  return linkat(AT_FDCWD, OpenFileName(copy).text, AT_FDCWD, to.Text(), AT_SYMLINK_FOLLOW);
}

/// Gives the finished copy its name. A link never replaces a file; file systems without links
/// get the name tested first.
bool NameCopy(const char* copy, const NativePath& name) {
  if (link(copy, name.Text()) == 0) {
    unlink(copy);
    return true;
  }
  if (errno == EEXIST) return false;
  if (Exists(name)) return Refuse(EEXIST) == 0;
  return std::rename(copy, name.Text()) == 0;
}

int CopyUnderOtherName(int source, const struct stat& status, const NativePath& folder,
                       const NativePath& to) {
  NativePath name = folder;
  name.Append("/.kelsave-XXXXXX");
  const Descriptor copy(mkostemp(name.Data(), O_CLOEXEC));
  if (!copy.IsOpen()) return -1;
  const bool done = FillCopy(source, status, copy.Get()) && NameCopy(name.Text(), to);
  return done ? 0 : Abandon(name);
}

/// Makes `to` a complete copy, safely on the disk.
int Copy(int source, const struct stat& status, const NativePath& to) {
  const NativePath folder = FolderOf(to);
  const Descriptor copy(OpenNameless(folder));
  const int result = copy.IsOpen() ? CopyWithoutName(source, status, copy.Get(), to)
                                   : CopyUnderOtherName(source, status, folder, to);
  if (result != 0) return -1;
  return SyncFolder(folder) ? 0 : Abandon(to);
}

}  // namespace

int MoveByCopying(const NativePath& from, const NativePath& to) {
  const Descriptor source(open(from.Text(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (!source.IsOpen() || fstat(source.Get(), &status) != 0) return -1;
  if (!S_ISREG(status.st_mode)) return Refuse(EXDEV);
  if (Exists(to)) return Refuse(EEXIST);  // before the work, not only after it
  if (Copy(source.Get(), status, to) != 0) return -1;
  // When the file is gone already, the copy is all there is.
  return unlink(from.Text()) == 0 || errno == ENOENT ? 0 : Abandon(to);
}

#endif
