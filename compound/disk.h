#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// The system's files. Whatever is done to a file, here or in platform/, is done through a Disk: it
/// is the one place that calls the system, and the seam at which a test makes call n fail.
///
/// Every call returns 0 or the errno of its failure. It does all it was asked for or fails; after a
/// failed write a part of the bytes may be in the file. A call that a signal interrupts goes on,
/// and a limit of the process on file sizes is a failure (EFBIG), not a signal. `file` is a
/// descriptor; paths are the system's own. Sizes and offsets are in bytes.
class Disk {
 public:
  virtual ~Disk() = default;

  /// As open(2), with O_CLOEXEC. The caller closes the file.
  virtual int Open(const char* path, int flags, mode_t permissions, int* file) = 0;

  /// A new file in `folder` for reading and writing that nobody sees: without a name where the file
  /// system has such files (then `*name` is empty), else under the hidden name `*name`.
  virtual int OpenUnseen(const char* folder, int* file, std::string* name) = 0;

  /// Gives a file of OpenUnseen its name; `name` is the one that it told. Never replaces a file:
  /// EEXIST.
  virtual int Show(int file, const char* name, const char* newName) = 0;

  /// The file is closed also when this fails.
  virtual int Close(int file) = 0;

  /// Without waiting: EWOULDBLOCK when another open file holds a lock that forbids it.
  virtual int Lock(int file, bool exclusive) = 0;
  virtual int Unlock(int file) = 0;

  virtual int Status(int file, struct stat* status) = 0;

  /// Reads `size` bytes, fewer only at the end of the file.
  virtual int ReadAt(int file, std::uint64_t offset, void* data, std::size_t size,
                     std::size_t* got) = 0;
  virtual int WriteAt(int file, std::uint64_t offset, const void* data, std::size_t size) = 0;

  /// Takes the space [from, to) so that writing there cannot lack it. The file ends at `to` at
  /// least, or keeps its length, which only a file system that takes space without writing can do.
  enum class Length { Grow, Keep };
  virtual int TakeSpace(int file, std::uint64_t from, std::uint64_t to, Length length) = 0;

  /// Whether the file is kept in memory, where writing takes the space as fast as taking it does.
  virtual bool IsInMemory(int file) = 0;

  /// Cuts the file to `size` or lengthens it with zeros, and gives back space beyond.
  virtual int Cut(int file, std::uint64_t size) = 0;

  /// Waits until the bytes and the attributes are on the disk.
  virtual int Sync(int file) = 0;

  /// Gives the file the permissions and the times of `status`, and its owner where that is allowed.
  virtual int SetAttributes(int file, const struct stat& status) = 0;

  virtual int StatusOf(const char* path, struct stat* status) = 0;
  virtual int StatusOfLink(const char* path, struct stat* status) = 0;  // lstat(2)
  virtual int ReadLink(const char* path, std::string* target) = 0;
  virtual int SetPermissions(const char* path, mode_t permissions) = 0;

  /// Never replaces a file: EEXIST. Where the file system cannot promise that in one step, the test
  /// comes first and another process could still slip in between.
  virtual int Rename(const char* from, const char* to) = 0;
  virtual int Remove(const char* path) = 0;

  /// Waits until the names in the folder are on the disk.
  virtual int SyncFolder(const char* folder) = 0;
};

/// The disk in use: the system's, unless a test has put its own in place.
Disk& CurrentDisk();

/// The disk that calls the system.
Disk& SystemDisk();

/// Puts a disk in place of the one in use; null is the system's. The caller keeps it.
void UseDisk(Disk* disk);

/// An open file of the disk in use, closed at the end of its life.
class OpenFile {
 public:
  OpenFile() = default;
  ~OpenFile() { Close(); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

  /// Where a call of the disk puts the file that it opens; one that was open is closed.
  int* Place();
  int Close();

 private:
  int number_ = -1;
};

inline bool IsSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// How much of `left` goes through memory that has room for `room`.
inline std::size_t AtMost(std::size_t room, std::uint64_t left) {
  return left < room ? static_cast<std::size_t>(left) : room;
}

/// Follows symbolic links from `path` to the name of the file itself, which need not exist: the
/// name that opening `path` would create or open. Another error than ENOENT is told.
int FollowLinks(const std::string& path, std::string* name);

/// The folder that a path's last part lies in.
std::string FolderOf(const std::string& path);
