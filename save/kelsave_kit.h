#pragma once

/// The kit for hosts: what every host of KelSave would write again around `SaveInterface`.
///
/// A host derives from `kel::Saver`, overrides the writers, and saves:
///
///   class MySaver : public kel::Saver {
///     void WriteScene(IStorage& file) override {
///       kel::WriteAll(*kel::CreateStream(file, L"Title"), title);
///     }
///   };
///
///   const kel::SaveResult saved = kel::SaveScene(saver, "scene.kel");
///   if (!saved) Tell(saved.reason);  // "Title: the disk is full"
///
/// and, before it opens a scene (the process may have stopped in the middle of a save) and after a
/// save that failed:
///
///   kel::RestoreBackup(saver, "scene.kel");
///
/// What it takes care of:
/// - A save that cannot keep the old version is refused before anything is touched.
/// - Only a file that is whole becomes the backup: an incomplete one, left by a crash, never pushes
///   out the last good version. It goes beside it.
/// - The file counts as whole only once the last writer has returned and everything is committed.
/// - Whatever goes wrong first is kept as a text. A writer may throw.
///
/// Headers over `kelsave.h`, in C++17, for every system. This is the one to include; it brings in
/// `kelsave_files.h`, where what is in a file stands apart from saving one. Paths and texts are in
/// the host's character set. Everything is called on the thread of the user interface.

#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <system_error>

#include "kelsave.h"
#include "kelsave_files.h"

#ifdef _WIN32
#include <io.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kel {

enum class SaveOutcome {
  Saved,
  NotSaved,
  AlreadySaving,  // a save was running already, and nothing was done
};

/// How a save ended. Only a saved scene counts as true.
struct [[nodiscard]] SaveResult {
  SaveOutcome outcome;
  std::string reason;  // why not, for people; empty when saved

  explicit operator bool() const { return outcome == SaveOutcome::Saved; }
};

struct SaveOptions {
  bool backup = true;     // keep the old version until the new one is whole, and after
  int sceneArgument = 0;  // for Saver::SceneArgument
};

enum class RestoreOutcome {
  Restored,
  NotNeeded,  // the file is whole
  NotRestored,
};

/// How bringing back a backup ended. True when the file is whole.
struct [[nodiscard]] RestoreResult {
  RestoreOutcome outcome;
  std::string reason;  // why not; empty otherwise

  explicit operator bool() const { return outcome != RestoreOutcome::NotRestored; }
};

class Saver;

/// Saves a scene into `file` through `saver`, which need not outlive the call; another interface
/// that was registered is so no more. Throws nothing.
///
/// Refused without touching anything, with the reason: when there is an old version that cannot be
/// examined or is in use, or that could not be kept. If a writer fails, or the new file cannot be
/// created or finished, there is no file of that name afterwards, and the old version is the
/// backup: RestoreBackup brings it back. An old version that was not whole, or no scene at all, is
/// never the backup: it lies beside it, with ".incomplete" after the name, and is back if the save
/// failed.
SaveResult SaveScene(Saver& saver, const std::string& file,
                     const SaveOptions& options = {}) noexcept;

/// Moves the backup of `file` back if the file is missing or not whole. Takes only a backup that is
/// whole and belongs to this file: a note beside it has the file's name and the time of its last
/// change, which renaming keeps. Nothing is touched otherwise. Throws nothing.
RestoreResult RestoreBackup(const Saver& saver, const std::string& file) noexcept;

/// The 22 operations of a host. Derive from it and override the writers; each of them puts its part
/// into the file. They may throw anything: that fails the save, and the text of a std::exception is
/// the reason in the result. All run within SaveScene.
class Saver : public SaveInterface {
 public:
  Saver() = default;
  Saver(const Saver&) = delete;
  Saver& operator=(const Saver&) = delete;
  virtual ~Saver() = default;

  /// Where the backup of `file` is, if there is one. Throws std::bad_alloc.
  std::string BackupPath(const std::string& file) const {
    return BackupFolder(file) + "\\" + HostText(UsesAlternateBackupName() ? 63348 : 60122);
  }

 protected:
  /// The first writer; then come 5 and 6, or 6 and 5, and then 4, 3, 2 and 1. `file` is the root of
  /// the new file. Close what you open in it before you return; do not keep it.
  virtual void WriteScene(IStorage& file) = 0;
  virtual void WriteSection1(IStorage& /*file*/) {}
  virtual void WriteSection2(IStorage& /*file*/) {}
  virtual void WriteSection3(IStorage& /*file*/) {}
  virtual void WriteSection4(IStorage& /*file*/) {}
  virtual void WriteSection5(IStorage& /*file*/) {}
  virtual void WriteSection6(IStorage& /*file*/) {}

  /// Whether section 5 is written before section 6. May throw, as a writer.
  virtual bool Section5First() { return true; }

  /// Called with "Classes Used" between the sections 5 and 6 and the section 4. May throw.
  virtual void Announce(const char* /*name*/) {}

  /// The folder for the backup of `file`; it is made when it is not there. By default each scene
  /// has one of its own, so that no scene's save pushes out the backup of another. It should be on
  /// the same disk as the file.
  virtual std::string BackupFolder(const std::string& file) const { return file + ".backup"; }

  /// Which of the host's two texts names the backup: 63348 instead of 60122.
  virtual bool UsesAlternateBackupName() const { return false; }

  /// Fails the save without an exception; the first reason counts. For use in writers.
  void Fail(const char* reason) noexcept {
    if (failed_) return;
    failed_ = true;
    try {
      reason_ = reason;
    } catch (const std::bad_alloc&) {  // then the result has no reason, but it is one
    }
  }

  int SceneArgument() const { return options_.sceneArgument; }

 private:
  friend SaveResult SaveScene(Saver& saver, const std::string& file,
                              const SaveOptions& options) noexcept;
  friend RestoreResult RestoreBackup(const Saver& saver, const std::string& file) noexcept;

  using Writer = void (Saver::*)(IStorage&);

  static std::string HostText(UINT id) {
    char text[512] = "";
    LoadStringA(GetModuleHandleA(nullptr), id, text, sizeof text);
    return text;
  }

  SaveResult Run(const std::string& file, const SaveOptions& options);
  std::string WhyNotBegin(const std::string& file);
  std::string PrepareBackup(const std::string& file);
  std::string MoveAside(const std::string& file);
  void PutBack(const std::string& file) const;
  RestoreResult Restore(const std::string& file) const;

  template <typename Call>
  void Guard(Call call) noexcept {
    if (failed_) return;
    try {
      call();
    } catch (const std::bad_alloc&) {
      Fail("there is not enough memory");
    } catch (const std::exception& problem) {
      Fail(problem.what());
    } catch (...) {
      Fail("a writer failed and did not say why");
    }
  }

  int Write(Writer writer) noexcept {
    Guard([&] { (this->*writer)(*storage_); });
    return failed_ ? 1 : 0;
  }

  /// What no later writer can spoil any more.
  void Finish() {
    HRESULT result = storage_->SetClass(detail::SceneFile);
    if (SUCCEEDED(result)) result = storage_->Commit(STGC_DEFAULT);
    if (FAILED(result)) throw Error(result, TextOf(result));
  }

  // The operations of SaveInterface.
  int SaveScene(void* /*scene*/) final { return Write(&Saver::WriteScene); }
  int SaveSection1() final {
    Write(&Saver::WriteSection1);
    Guard([this] { Finish(); });
    return failed_ ? 1 : 0;
  }
  int SaveSection2() final { return Write(&Saver::WriteSection2); }
  int SaveSection3() final { return Write(&Saver::WriteSection3); }
  int SaveSection4() final { return Write(&Saver::WriteSection4); }
  int SaveSection5() final { return Write(&Saver::WriteSection5); }
  int SaveSection6() final { return Write(&Saver::WriteSection6); }
  bool UseAlternateBackupName() final { return alternateName_; }
  void* OpenScene(const wchar_t* /*name*/, int /*code*/, int /*argument*/) final { return this; }
  int FileExists(const char* /*fileName*/) final { return exists_ ? 1 : 0; }
  void UpdateAfterSave(int /*first*/, int /*second*/) final {}
  void PrepareSave() final {}
  int NeedsPrepareSave() final { return 0; }
  const char* GetDirectory(int /*number*/) final { return backupFolder_.c_str(); }
  void RunAfterSaveStep(int /*step*/) final {}
  int HasAfterSaveSteps() final { return 0; }
  void SetStorage(IStorage* storage) final {
    storage_ = storage;
    // A file of this class is one that a crash left.
    if (storage == nullptr || FAILED(storage->SetClass(detail::Unfinished))) {
      Fail("the new file cannot be written");
    }
  }
  int WantsBackup() final { return 1; }  // of a file that exists
  void SaveFailed() final {}
  void AnnounceSection(const char* name) final {
    Guard([&] { Announce(name); });
  }
  void MarkSaved() final {}
  bool SaveSection5First() final {
    bool first = true;
    Guard([&] { first = Section5First(); });
    return first;
  }

  // What one save knows.
  SaveOptions options_;
  std::string backupFolder_;
  bool alternateName_ = false;
  bool exists_ = false;  // the old file, where it was
  bool failed_ = false;
  std::string reason_;
  std::string aside_;            // where the old file went if it was not whole
  IStorage* storage_ = nullptr;  // the library's, while the writers run
};

// ---- How it is done ---------------------------------------------------------------------------

namespace detail {

/// A call without an interface answers 1 only while a save is running, and does nothing.
inline bool IsSaving() {
  SetSaveInterface(nullptr);
  return SaveToFileDLL("", 0, 1, 0) == 1;
}

/// The text of an exception, if there is memory for it.
inline std::string ShortTextOf(const std::exception& problem) noexcept {
  try {
    return problem.what();
  } catch (const std::bad_alloc&) {
    return "out of memory";  // short enough to need none
  }
}

inline std::string NameIn(const std::string& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

/// Only a backslash before the name keeps the folder out of the comparison with spared names.
inline std::string ForLibrary(std::string path) {
  const std::size_t separator = path.find_last_of("/\\");
  if (separator != std::string::npos) path[separator] = '\\';
  return path;
}

/// As the library compares: seven bytes, without regard to the case of letters.
inline bool IsSpared(const std::string& sparedText, const std::string& name) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; };
  const char* a = sparedText.c_str();
  const char* b = name.c_str();
  for (int i = 0; i < 7; ++i, ++a, ++b) {
    if (lower(*a) != lower(*b)) return false;
    if (*a == '\0') return true;
  }
  return true;
}

/// When the file was changed last, in seconds; 0 when that cannot be found out.
inline long long ModifiedAt(const std::string& path) {
#ifdef _WIN32
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return 0;
  ULARGE_INTEGER time;
  time.LowPart = data.ftLastWriteTime.dwLowDateTime;
  time.HighPart = data.ftLastWriteTime.dwHighDateTime;
  return static_cast<long long>(time.QuadPart / 10000000);
#else
  struct stat status = {};
  return stat(Native(path).c_str(), &status) == 0 ? static_cast<long long>(status.st_mtime) : 0;
#endif
}

/// Where an old version goes that is not whole and must not push out the backup.
inline std::string AsidePath(const std::string& backup) { return backup + ".incomplete"; }

inline std::string NotePath(const std::string& backup) { return backup + ".of"; }

/// What keeps the file from being moved to the backup, as far as that shows beforehand; on Windows
/// not whether another disk has space for it.
inline std::error_code WhyNotMoved(const std::string& file, const std::string& backup) {
#ifndef _WIN32
  namespace fs = std::filesystem;
  const std::string from = (fs::path(".") / Native(file)).parent_path().string();
  const std::string to = Native(backup).parent_path().string();
  struct stat here = {};
  struct stat there = {};
  if (faccessat(AT_FDCWD, from.c_str(), W_OK | X_OK, AT_EACCESS) != 0 ||
      faccessat(AT_FDCWD, to.c_str(), W_OK | X_OK, AT_EACCESS) != 0 ||
      stat(from.c_str(), &here) != 0 || stat(to.c_str(), &there) != 0) {
    return {errno, std::generic_category()};
  }
  if (here.st_dev == there.st_dev) return {};
  std::error_code error;
  const std::uintmax_t given = fs::exists(Native(backup)) ? fs::file_size(Native(backup)) : 0;
  const bool fits = fs::space(to, error).available + given >= fs::file_size(Native(file));
  return fits ? error : std::make_error_code(std::errc::no_space_on_device);
#else
  for (const std::string* path : {&file, &backup}) {
    const HANDLE handle = CreateFileA(path->c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const DWORD error = handle == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_FILE_NOT_FOUND;
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
    if (error != ERROR_FILE_NOT_FOUND) {
      return std::make_error_code(error == ERROR_SHARING_VIOLATION
                                      ? std::errc::device_or_resource_busy
                                      : std::errc::permission_denied);
    }
  }
  return {};
#endif
}

/// Notes on the disk whose backup this is going to be; else the error.
inline std::error_code WriteNote(const std::string& backup, const std::string& file) {
  errno = 0;
  const std::string path = Native(NotePath(backup)).string();
  std::FILE* note = std::fopen(path.c_str(), "wb");
  if (note == nullptr) return {errno, std::generic_category()};
  bool written = std::fprintf(note, "%lld\n%s", ModifiedAt(file), NameIn(file).c_str()) > 0 &&
                 std::fflush(note) == 0;
#ifdef _WIN32
  written = written && _commit(_fileno(note)) == 0;
#else
  written = written && fsync(fileno(note)) == 0;
#endif
  const int error = errno;
  if (std::fclose(note) == 0 && written) return {};
  return {error == 0 ? EIO : error, std::generic_category()};
}

/// Whether the backup holds the last version of `file` before a save replaced it.
inline bool Belongs(const std::string& backup, const std::string& file) {
  std::ifstream note(Native(NotePath(backup)), std::ios::binary);
  long long time = 0;
  std::string name;
  if (!(note >> time) || note.get() != '\n' || !std::getline(note, name, '\0')) return false;
  const long long apart = ModifiedAt(backup) - time;
  constexpr long long Coarse = 2;  // some disks keep times to two seconds
  return time != 0 && apart >= -Coarse && apart <= Coarse && name == NameIn(file);
}

/// Whether this result says nothing of what is in the file.
inline bool CouldNotLook(HRESULT result) {
  for (const HRESULT code :
       {STG_E_ACCESSDENIED, E_ACCESSDENIED, STG_E_SHAREVIOLATION, STG_E_LOCKVIOLATION,
        STG_E_TOOMANYOPENFILES, STG_E_INSUFFICIENTMEMORY, E_OUTOFMEMORY}) {
    if (result == code) return true;
  }
  return false;
}

/// Why the new file could not be created.
inline HRESULT WhyNotCreated(const std::string& file) {
#ifdef _WIN32
  // The system keeps no reason: it is asked for the like once more.
  const auto open = [&](DWORD how, DWORD flags) {
    const HANDLE handle = CreateFileA(file.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0,
                                      nullptr, how, flags, nullptr);
    const DWORD error = handle == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
    return error;
  };
  DWORD error = open(OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
  if (error == ERROR_FILE_NOT_FOUND) error = open(CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE);
  // The codes of storages continue the older ones of the system.
  if (error == ERROR_INVALID_NAME || error == ERROR_FILENAME_EXCED_RANGE) return STG_E_INVALIDNAME;
  if (error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL) return STG_E_MEDIUMFULL;
  return error == ERROR_SUCCESS ? E_FAIL : static_cast<HRESULT>(0x80030000U | (error & 0xFFFFU));
#else
  static_cast<void>(file);
  return KelLastStorageResult();
#endif
}

}  // namespace detail

/// Why the save must not begin; empty when it may. Finds out what the operations will answer.
inline std::string Saver::WhyNotBegin(const std::string& file) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const fs::file_status status = fs::status(detail::Native(file), ignored);
  exists_ = fs::is_regular_file(status);
  if (fs::exists(status) && !exists_) return detail::ReasonOf(file, STG_E_ACCESSDENIED);
  if (!exists_ || !options_.backup) return "";
  std::string reason;
  const HRESULT result = detail::Examine(file, STGM_SHARE_EXCLUSIVE, reason);
  if (detail::CouldNotLook(result)) return reason;
  reason = SUCCEEDED(result) ? PrepareBackup(file) : MoveAside(file);
  return reason.empty() ? "" : "the old version cannot be kept: " + reason;
}

/// Makes sure of everything that the library needs to keep the old version, because without it, it
/// writes over the old version all the same. Else says what is missing.
inline std::string Saver::PrepareBackup(const std::string& file) {
  namespace fs = std::filesystem;
  const std::string spared = HostText(60121);
  if (spared.empty()) return "the host has no text 60121";
  if (detail::IsSpared(spared, detail::NameIn(file))) return "the name is one of a backup";
  backupFolder_ = BackupFolder(file);
  alternateName_ = UsesAlternateBackupName();
  const std::string backup = BackupPath(file);
  if (backup.size() > 511) return "the path of the backup is too long";
  std::error_code error;
  fs::create_directories(detail::Native(backupFolder_), error);
  if (error) return error.message();
  const fs::file_status old = fs::status(detail::Native(backup), error);
  const bool writable = (old.permissions() & fs::perms::owner_write) != fs::perms::none;
  if (fs::exists(old) && (!fs::is_regular_file(old) || !writable)) {
    return "the older backup cannot be replaced";
  }
  error = detail::WhyNotMoved(file, backup);
  if (!error) error = detail::WriteNote(backup, file);
  return error ? error.message() : "";
}

inline std::string Saver::MoveAside(const std::string& file) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::create_directories(detail::Native(BackupFolder(file)), error);
  if (error) return error.message();
  aside_ = detail::AsidePath(BackupPath(file));
  fs::rename(detail::Native(file), detail::Native(aside_), error);
  if (error) return error.message();
  exists_ = false;
  return "";
}

inline void Saver::PutBack(const std::string& file) const {
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (aside_.empty() || fs::exists(detail::Native(file), ignored)) return;
  fs::rename(detail::Native(aside_), detail::Native(file), ignored);
}

inline SaveResult Saver::Run(const std::string& file, const SaveOptions& options) {
  options_ = options;
  failed_ = false;
  reason_.clear();
  aside_.clear();
  std::string reason = WhyNotBegin(file);
  if (!reason.empty()) return {SaveOutcome::NotSaved, reason};
  SetSaveInterface(this);
  const int result = SaveToFileDLL(detail::ForLibrary(file).c_str(), 0, options.backup ? 0 : 1,
                                   options.sceneArgument);
  SetSaveInterface(nullptr);
  const bool created = storage_ != nullptr;
  storage_ = nullptr;
  if (result == 1) return {SaveOutcome::Saved, ""};
  reason = created ? reason_ : detail::ReasonOf(file, detail::WhyNotCreated(file));
  PutBack(file);
  return {SaveOutcome::NotSaved, reason};
}

inline RestoreResult Saver::Restore(const std::string& file) const {
  namespace fs = std::filesystem;
  const auto refuse = [](const std::string& why) {
    return RestoreResult{RestoreOutcome::NotRestored, why};
  };
  std::string reason;
  const HRESULT result = detail::Examine(file, STGM_SHARE_EXCLUSIVE, reason);
  if (SUCCEEDED(result)) return {RestoreOutcome::NotNeeded, ""};
  if (detail::CouldNotLook(result)) return refuse(reason);
  const std::string backup = BackupPath(file);
  if (!detail::Belongs(backup, file)) return refuse(reason + ", and there is no backup of it");
  if (!IsWhole(backup, &reason)) return refuse("the backup: " + reason);
  std::error_code error;
  fs::rename(detail::Native(backup), detail::Native(file), error);
  if (error) return refuse(error.message());
  fs::remove(detail::Native(detail::NotePath(backup)), error);
  return {RestoreOutcome::Restored, ""};
}

inline SaveResult SaveScene(Saver& saver, const std::string& file,
                            const SaveOptions& options) noexcept {
  try {
    if (detail::IsSaving()) return {SaveOutcome::AlreadySaving, "a save is running already"};
    return saver.Run(detail::Resolved(file), options);
  } catch (const std::exception& problem) {
    return {SaveOutcome::NotSaved, detail::ShortTextOf(problem)};
  }
}

inline RestoreResult RestoreBackup(const Saver& saver, const std::string& file) noexcept {
  try {
    if (detail::IsSaving()) return {RestoreOutcome::NotRestored, "a save is running"};
    return saver.Restore(detail::Resolved(file));
  } catch (const std::exception& problem) {
    return {RestoreOutcome::NotRestored, detail::ShortTextOf(problem)};
  }
}

}  // namespace kel
