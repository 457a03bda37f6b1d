#include "tests/failing_disk.h"

#include <fcntl.h>

bool FailingDisk::Fails(const char* name) {
  calls_.emplace_back(name);
  if (failing_ == 0) return false;
  return mode_ == Mode::Once ? Count() == failing_ : Count() >= failing_;
}

int FailingDisk::Open(const char* path, int flags, mode_t permissions, int* file) {
  return Try("Open", [&](Disk& disk) { return disk.Open(path, flags, permissions, file); });
}

int FailingDisk::OpenUnseen(const char* folder, int* file, std::string* name) {
  return Try("OpenUnseen", [&](Disk& disk) {
    if (hasNameless) return disk.OpenUnseen(folder, file, name);
    *name = std::string(folder) + "/.kelsave-hidden";
    return disk.Open(name->c_str(), O_RDWR | O_CREAT | O_EXCL, 0600, file);
  });
}

int FailingDisk::Show(int file, const char* name, const char* newName) {
  return Try("Show", [&](Disk& disk) { return disk.Show(file, name, newName); });
}

int FailingDisk::Close(int file) {
  const int closed = SystemDisk().Close(file);
  return Fails("Close") ? error_ : closed;
}

int FailingDisk::Lock(int file, bool exclusive) {
  return Try("Lock", [&](Disk& disk) { return disk.Lock(file, exclusive); });
}

int FailingDisk::Unlock(int file) {
  return Try("Unlock", [&](Disk& disk) { return disk.Unlock(file); });
}

int FailingDisk::Status(int file, struct stat* status) {
  return Try("Status", [&](Disk& disk) { return disk.Status(file, status); });
}

int FailingDisk::ReadAt(int file, std::uint64_t offset, void* data, std::size_t size,
                        std::size_t* got) {
  *got = 0;
  return Try("ReadAt", [&](Disk& disk) { return disk.ReadAt(file, offset, data, size, got); });
}

int FailingDisk::WriteAt(int file, std::uint64_t offset, const void* data, std::size_t size) {
  if (!Fails("WriteAt")) return SystemDisk().WriteAt(file, offset, data, size);
  SystemDisk().WriteAt(file, offset, data, size / 2);
  return error_;
}

int FailingDisk::TakeSpace(int file, std::uint64_t from, std::uint64_t to, Length length) {
  return Try("TakeSpace", [&](Disk& disk) { return disk.TakeSpace(file, from, to, length); });
}

int FailingDisk::Cut(int file, std::uint64_t size) {
  return Try("Cut", [&](Disk& disk) { return disk.Cut(file, size); });
}

int FailingDisk::Sync(int file) {
  return Try("Sync", [&](Disk& disk) { return disk.Sync(file); });
}

int FailingDisk::SetAttributes(int file, const struct stat& status) {
  return Try("SetAttributes", [&](Disk& disk) { return disk.SetAttributes(file, status); });
}

int FailingDisk::StatusOf(const char* path, struct stat* status) {
  return Try("StatusOf", [&](Disk& disk) { return disk.StatusOf(path, status); });
}

int FailingDisk::StatusOfLink(const char* path, struct stat* status) {
  return Try("StatusOfLink", [&](Disk& disk) { return disk.StatusOfLink(path, status); });
}

int FailingDisk::ReadLink(const char* path, std::string* target) {
  return Try("ReadLink", [&](Disk& disk) { return disk.ReadLink(path, target); });
}

int FailingDisk::SetPermissions(const char* path, mode_t permissions) {
  return Try("SetPermissions", [&](Disk& disk) { return disk.SetPermissions(path, permissions); });
}

int FailingDisk::Rename(const char* from, const char* to) {
  return Try("Rename", [&](Disk& disk) { return disk.Rename(from, to); });
}

int FailingDisk::Remove(const char* path) {
  return Try("Remove", [&](Disk& disk) { return disk.Remove(path); });
}

int FailingDisk::SyncFolder(const char* folder) {
  return Try("SyncFolder", [&](Disk& disk) { return disk.SyncFolder(folder); });
}
