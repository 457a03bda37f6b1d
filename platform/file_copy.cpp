#include "platform/file_copy.h"

#ifndef _WIN32

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr std::size_t PieceSize = std::size_t{1} << 20U;

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

bool Exists(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
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
  std::vector<char> piece(PieceSize);
  for (;;) {
    const ssize_t got = read(from, piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!WriteAll(to, piece.data(), static_cast<std::size_t>(got))) return false;
  }
}

/// The owner is kept where that is allowed; that it is not must not stop the move.
bool CopyAttributes(const struct stat& status, int to) {
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (fchown(to, status.st_uid, status.st_gid) != 0) errno = 0;
  return fchmod(to, status.st_mode & 07777U) == 0 && futimens(to, times) == 0;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool SyncFolder(const std::string& folder) {
  const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return opened.IsOpen() && (fsync(opened.Get()) == 0 || errno == EINVAL);
}

/// Gives the finished copy its name. A link never replaces a file; file systems without links
/// get the name tested first.
bool NameCopy(const std::string& copy, const std::string& name) {
  if (link(copy.c_str(), name.c_str()) == 0) {
    unlink(copy.c_str());
    return true;
  }
  if (errno == EEXIST) return false;
  if (Exists(name)) return Refuse(EEXIST) == 0;
  return std::rename(copy.c_str(), name.c_str()) == 0;
}

/// Writes a complete copy of `source` into the new file `copy`.
bool FillCopy(int source, const struct stat& status, int copy) {
  return CopyBytes(source, copy) && CopyAttributes(status, copy) && fsync(copy) == 0;
}

int Abandon(const std::string& unwanted) {
  const int error = errno;
  unlink(unwanted.c_str());
  errno = error;
  return -1;
}

}  // namespace

int MoveByCopying(const std::string& from, const std::string& to) {
  const Descriptor source(open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status;
  if (!source.IsOpen() || fstat(source.Get(), &status) != 0) return -1;
  if (!S_ISREG(status.st_mode)) return Refuse(EXDEV);
  if (Exists(to)) return Refuse(EEXIST);  // before the work, not only after it
  const std::string folder = FolderOf(to);
  std::string copyName = folder + "/.kelsave-XXXXXX";
  const Descriptor copy(mkostemp(copyName.data(), O_CLOEXEC));
  if (!copy.IsOpen()) return -1;
  if (!FillCopy(source.Get(), status, copy.Get())) return Abandon(copyName);
  if (!NameCopy(copyName, to)) return Abandon(copyName);
  if (!SyncFolder(folder)) return Abandon(to);
  // When the file is gone already, the copy is all there is.
  return unlink(from.c_str()) == 0 || errno == ENOENT ? 0 : Abandon(to);
}

#endif
