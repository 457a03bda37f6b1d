#pragma once

#include <cerrno>
#include <string>
#include <vector>

#include "compound/disk.h"

/// The system's disk, of which call number `failing` fails, from 1 on; 0 is none. In use while it
/// lives. A write that fails has written half of its bytes; a file that cannot be closed is closed.
/// A program that uses it is linked with the objects of compound/, not with the shared library,
/// which shows nobody its disk.
///
///     for (int n = 1;; ++n) {
///       FailingDisk disk(n, ENOSPC, FailingDisk::Mode::Once);
///       ... what is tested ...
///       if (!disk.HasFailed()) break;
///     }
class FailingDisk final : public Disk {
 public:
  enum class Mode { Once, FromThenOn };

  explicit FailingDisk(int failing = 0, int error = EIO, Mode mode = Mode::Once)
      : failing_(failing), error_(error), mode_(mode) {
    UseDisk(this);
  }
  ~FailingDisk() override { UseDisk(nullptr); }
  FailingDisk(const FailingDisk&) = delete;
  FailingDisk& operator=(const FailingDisk&) = delete;

  /// Whether files without a name are to be had, as on most file systems.
  bool hasNameless = true;

  bool HasFailed() const { return failing_ > 0 && Count() >= failing_; }

  /// The names of the calls so far.
  const std::vector<std::string>& Calls() const { return calls_; }
  int Count() const { return static_cast<int>(calls_.size()); }

  int Open(const char* path, int flags, mode_t permissions, int* file) override;
  int OpenUnseen(const char* folder, int* file, std::string* name) override;
  int Show(int file, const char* name, const char* newName) override;
  int Close(int file) override;
  int Lock(int file, bool exclusive) override;
  int Unlock(int file) override;
  int Status(int file, struct stat* status) override;
  int ReadAt(int file, std::uint64_t offset, void* data, std::size_t size,
             std::size_t* got) override;
  int WriteAt(int file, std::uint64_t offset, const void* data, std::size_t size) override;
  int TakeSpace(int file, std::uint64_t from, std::uint64_t to, Length length) override;
  bool IsInMemory(int file) override { return SystemDisk().IsInMemory(file); }
  int Cut(int file, std::uint64_t size) override;
  int Sync(int file) override;
  int SetAttributes(int file, const struct stat& status) override;
  int StatusOf(const char* path, struct stat* status) override;
  int StatusOfLink(const char* path, struct stat* status) override;
  int ReadLink(const char* path, std::string* target) override;
  int SetPermissions(const char* path, mode_t permissions) override;
  int Rename(const char* from, const char* to) override;
  int Remove(const char* path) override;
  int SyncFolder(const char* folder) override;

 private:
  bool Fails(const char* name);

  /// Makes the call unless it is to fail.
  template <class Call>
  int Try(const char* name, const Call& call) {
    return Fails(name) ? error_ : call(SystemDisk());
  }

  int failing_;
  int error_;
  Mode mode_;
  std::vector<std::string> calls_;
};
