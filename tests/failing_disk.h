#pragma once

#include <fcntl.h>

#include <cerrno>
#include <functional>
#include <string>
#include <type_traits>
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

  /// What another process does just before a call, whose name it is told.
  std::function<void(const std::string& call)> before = [](const std::string&) {};

  /// Whether files without a name are to be had, as on most file systems.
  bool hasNameless = true;

  /// Whether space is taken without being taken, for files that no disk could hold.
  bool isSparse = false;

  bool HasFailed() const { return failing_ > 0 && Count() >= failing_; }

  /// The names of the calls so far.
  const std::vector<std::string>& Calls() const { return calls_; }
  int Count() const { return static_cast<int>(calls_.size()); }

  int Open(const char* path, int flags, mode_t permissions, int* file) override {
    return Try("Open", &Disk::Open, path, flags, permissions, file);
  }
  int OpenUnseen(const char* folder, int* file, std::string* name) override {
    if (hasNameless) return Try("OpenUnseen", &Disk::OpenUnseen, folder, file, name);
    const std::string hidden = std::string(folder) + "/.kelsave-hidden";
    const int flags = O_RDWR | O_CREAT | O_EXCL;
    const int outcome = Try("OpenUnseen", &Disk::Open, hidden.c_str(), flags, 0600U, file);
    if (outcome == 0) *name = hidden;
    return outcome;
  }
  int Show(int file, const char* name, const char* newName) override {
    return Try("Show", &Disk::Show, file, name, newName);
  }
  int Close(int file) override {
    const int closed = SystemDisk().Close(file);
    return Fails("Close") ? error_ : closed;
  }
  int Lock(int file, bool exclusive) override { return Try("Lock", &Disk::Lock, file, exclusive); }
  int Unlock(int file) override { return Try("Unlock", &Disk::Unlock, file); }
  int Status(int file, struct stat* status) override {
    return Try("Status", &Disk::Status, file, status);
  }
  int ReadAt(int file, std::uint64_t at, void* data, std::size_t size, std::size_t* got) override {
    *got = 0;
    return Try("ReadAt", &Disk::ReadAt, file, at, data, size, got);
  }
  int WriteAt(int file, std::uint64_t at, const void* data, std::size_t size) override {
    const bool fails = Fails("WriteAt");
    const int outcome = SystemDisk().WriteAt(file, at, data, fails ? size / 2 : size);
    return fails ? error_ : outcome;
  }
  int TakeSpace(int file, std::uint64_t from, std::uint64_t to, Length length) override {
    if (isSparse) return Try("TakeSpace", &Disk::Cut, file, to);
    return Try("TakeSpace", &Disk::TakeSpace, file, from, to, length);
  }
  bool IsInMemory(int file) override { return SystemDisk().IsInMemory(file); }
  int Cut(int file, std::uint64_t size) override { return Try("Cut", &Disk::Cut, file, size); }
  int Sync(int file) override { return Try("Sync", &Disk::Sync, file); }
  int SetAttributes(int file, const struct stat& status) override {
    return Try("SetAttributes", &Disk::SetAttributes, file, status);
  }
  int StatusOf(const char* path, struct stat* status) override {
    return Try("StatusOf", &Disk::StatusOf, path, status);
  }
  int StatusOfLink(const char* path, struct stat* status) override {
    return Try("StatusOfLink", &Disk::StatusOfLink, path, status);
  }
  int ReadLink(const char* path, std::string* target) override {
    return Try("ReadLink", &Disk::ReadLink, path, target);
  }
  int SetPermissions(const char* path, mode_t permissions) override {
    return Try("SetPermissions", &Disk::SetPermissions, path, permissions);
  }
  int Rename(const char* from, const char* to) override {
    return Try("Rename", &Disk::Rename, from, to);
  }
  int Remove(const char* path) override { return Try("Remove", &Disk::Remove, path); }
  int SyncFolder(const char* folder) override {
    return Try("SyncFolder", &Disk::SyncFolder, folder);
  }

 private:
  bool Fails(const char* name) {
    before(name);
    calls_.emplace_back(name);
    return failing_ > 0 && (mode_ == Mode::Once ? Count() == failing_ : Count() >= failing_);
  }

  /// Makes the call unless it is to fail.
  template <class... Parameters>
  int Try(const char* name, int (Disk::*call)(Parameters...),
          std::type_identity_t<Parameters>... arguments) {
    return Fails(name) ? error_ : (SystemDisk().*call)(arguments...);
  }

  int failing_;
  int error_;
  Mode mode_;
  std::vector<std::string> calls_;
};
