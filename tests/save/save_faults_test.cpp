/// A fault in every place of a save, one alone and all from one on: no memory, and a disk whose
/// call fails. What is demanded each time:
/// - The result says what is on the disk: 1 is a whole new version, 0 is none; and the host has
///   been told the same.
/// - The old version is whole somewhere unless the new one is; without a backup it may be gone when
///   a writer failed, and the host knows.
/// - Nothing else lies about, unless what failed was deleting it.
/// - The next save works.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/files.h"
#include "tests/failing_disk.h"
#include "tests/failing_memory.h"
#include "tests/save/recording_host.h"

namespace fs = std::filesystem;

namespace {

const std::string Old(99999, 'o');
constexpr const char* Memory = "/dev/shm";  // waiting for the disk takes no time there

/// What a folder holds: a word for each entry.
std::string Look(const Folder& folder) {
  std::string all;
  for (const auto& entry : fs::directory_iterator(folder.Root())) {
    const std::string name = entry.path().filename().string();
    const char* kind = entry.is_symlink()                              ? "@ "
                       : folder.Text(name) == Old                      ? "=old "
                       : RecordingHost::IsWhole(entry.path().string()) ? "=new "
                                                                       : "=bad ";
    all += name + kind;
  }
  return all;
}

enum Kind { Backup, BackupOnOtherFileSystem, NamedCopy, NoBackup, ThroughLink, LinkToTheBackup };

bool IsLink(Kind kind) { return kind == ThroughLink || kind == LinkToTheBackup; }
bool IsMoved(Kind kind) { return kind == BackupOnOtherFileSystem || kind == NamedCopy; }

/// A save over an old file, and its outcome.
struct Scene : Situation {
  const Kind kind;
  const std::string name;  // of the file itself
  const Folder other{Memory};

  explicit Scene(Kind wanted)
      : Situation(wanted == ThroughLink       ? "\\real.kel"
                  : wanted == LinkToTheBackup ? "\\KelBackup.bak"
                                              : "\\scene.kel",
                  Old, IsMoved(wanted) ? fs::temp_directory_path().string() : Memory),
        kind(wanted),
        name(path.substr(path.rfind('\\') + 1)) {
    if (IsLink(kind)) {
      path = folder.Path("scene.kel");
      fs::create_symlink(name, path);
    }
    if (IsMoved(kind)) host.directory = other.Root();
    host.wantsBackup = kind != NoBackup ? 1 : 0;
  }

  bool IsBackedUp() const { return kind != NoBackup && kind != LinkToTheBackup; }

  /// The demands of this file's head. `tidy`: what was to be deleted could be deleted.
  /// `keepsOld`: nothing can have kept the backup from being made.
  void ExpectOutcome(int result, bool tidy, bool keepsOld) {
    const std::string found = Look(folder) + Look(other);
    SCOPED_TRACE(found + host.calls);
    const auto has = [&found](const char* text) { return found.find(text) != std::string::npos; };
    const bool failed = host.calls.find("SaveFailed") != std::string::npos;
    EXPECT_EQ(host.calls.find("MarkSaved") != std::string::npos, result == 1);
    EXPECT_EQ(host.calls.find('['), std::string::npos) << "something was amiss";
    EXPECT_TRUE(result == 0 || !failed);
    const bool isNew = has((name + "=new").c_str());
    EXPECT_TRUE(isNew == (result == 1) || (isNew && !tidy));
    EXPECT_TRUE(has("=old") || (result == 1 && !keepsOld) || (failed && !IsBackedUp()));
    EXPECT_FALSE(has("=bad") &&
                 (tidy || result == 1 || (IsBackedUp() && has("KelBackup.bak=bad"))));
    EXPECT_FALSE(has(".kelsave-") && (tidy || kind != NamedCopy));
    EXPECT_EQ(has("scene.kel@"), IsLink(kind));
    // A file whose permissions could not be asked for has become read-only.
    const std::string file = folder.Path(name);
    if (fs::exists(file)) fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(Save(), 1) << "the next save";
    EXPECT_TRUE(RecordingHost::IsWhole(file));
    if (isNew && IsBackedUp()) {
      const Folder& backups = IsMoved(kind) ? other : folder;
      EXPECT_TRUE(RecordingHost::IsWhole(backups.Path("KelBackup.bak"))) << "the next backup";
    }
  }
};

class SaveFaults : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(Scenes, SaveFaults,
                         testing::Values(Backup, BackupOnOtherFileSystem, NamedCopy, NoBackup,
                                         ThroughLink, LinkToTheBackup));

TEST_P(SaveFaults, NoMemory) {
  for (const bool allAfter : {false, true}) {
    bool reached = true;
    for (int first = 0; reached && !HasFailure(); ++first) {
      SCOPED_TRACE(std::to_string(first) + (allAfter ? " and after" : " alone"));
      Scene scene(GetParam());
      int result = -1;
      {
        const FailingMemory memory(first, allAfter);
        result = scene.Save();
        reached = memory.Reached();
      }
      EXPECT_TRUE(reached || result == 1);
      EXPECT_TRUE(first > 0 || reached) << "no allocation is counted";
      scene.ExpectOutcome(result, true, GetParam() == Backup || GetParam() == ThroughLink);
    }
  }
}

TEST_P(SaveFaults, FailingDisk) {
  for (const int error : {EIO, ENOSPC, EACCES}) {
    for (const FailingDisk::Mode mode : {FailingDisk::Mode::Once, FailingDisk::Mode::FromThenOn}) {
      const bool once = mode == FailingDisk::Mode::Once;
      bool reached = true;
      for (int n = 1; reached && !HasFailure(); ++n) {
        Scene scene(GetParam());
        int result = -1;
        std::string call;
        {
          FailingDisk disk(n, error, mode);
          disk.hasNameless = GetParam() != NamedCopy;
          result = scene.Save();
          reached = disk.HasFailed();
          if (reached) call = disk.Calls()[static_cast<std::size_t>(n) - 1];
        }
        SCOPED_TRACE(std::to_string(n) + " " + call + (once ? "" : " and after") + ": " +
                     std::strerror(error));
        EXPECT_TRUE(reached || result == 1);
        const bool tidy = once && call != "Remove" && call != "StatusOfLink";
        scene.ExpectOutcome(result, tidy, false);
      }
    }
  }
}

// A moved file is in one place or the other, whole; which one, the result tells.
TEST(MoveFaults, FailingDisk) {
  for (const bool hasNameless : {true, false}) {
    for (const FailingDisk::Mode mode : {FailingDisk::Mode::Once, FailingDisk::Mode::FromThenOn}) {
      bool reached = true;
      for (int n = 1; reached && !HasFailure(); ++n) {
        const Folder here;
        const Folder there(Memory);
        const std::string from = here.Put("from", Old);
        FailingDisk disk(n, EIO, mode);
        disk.hasNameless = hasNameless;
        const int result = files::rename(from.c_str(), there.Path("to").c_str());
        reached = disk.HasFailed();
        SCOPED_TRACE(std::to_string(n) + " " + disk.Calls().back());
        EXPECT_EQ(Look(here), result == 0 ? "" : "from=old ");
        if (result == 0 || mode == FailingDisk::Mode::Once) {
          EXPECT_EQ(Look(there), result == 0 ? "to=old " : "");
        }
      }
    }
  }
}

// No fault shows what was not waited for.
TEST(MoveFaults, TheCopyIsOnTheDiskBeforeTheFileIsDeleted) {
  const FailingDisk disk;
  EXPECT_EQ(Scene(BackupOnOtherFileSystem).Save(), 1);
  std::string calls;
  for (const std::string& call : disk.Calls()) calls += call + " ";
  EXPECT_NE(calls.find("SetAttributes Sync Show SyncFolder Close Remove "), std::string::npos)
      << calls;
}

}  // namespace
