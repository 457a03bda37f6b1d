/// A fault in every place of a save, one alone and all from one on: no memory, and a disk whose
/// call fails. What is demanded each time:
/// - The result says what is on the disk: 1 is a whole new version, 0 is none; and the host has
///   been told the same.
/// - The old version is whole somewhere unless the new one is; without a backup it may be gone when
///   a writer failed, and the host knows.
/// - Nothing else lies about, unless what failed was deleting it.
/// - The next save works.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include <kelsave.h>
#include "tests/failing_disk.h"
#include "tests/folder.h"
#include "tests/save/failing_memory.h"
#include "tools/compound_check/compound_checker.h"

namespace fs = std::filesystem;

namespace {

constexpr char Meshes[600000] = "more than a piece of the file";
constexpr char Title[] = "less than a sector";
constexpr unsigned char SceneClass[] = {0x91, 0x0C, 0x3E, 0x5A, 0x7D, 0x2B, 0x16, 0x4F,
                                        0x8C, 0x4A, 0xD0, 0x7E, 0x93, 0xB1, 0xF2, 0x58};
const std::string Old(100000, 'o');

/// Writes two streams as a careful host does, and takes no memory of its own.
class CarefulHost : public SaveInterface {
 public:
  const char* backupFolder = nullptr;
  bool saved = false;
  bool failed = false;

  int SaveScene(void*) override { return Write(L"Title", Title, sizeof Title); }
  int SaveSection1() override { return FAILED(storage_->Commit(STGC_DEFAULT)) ? 1 : 0; }
  int SaveSection2() override { return 0; }
  int SaveSection3() override { return 0; }
  int SaveSection4() override { return Write(L"Meshes", Meshes, sizeof Meshes); }
  int SaveSection5() override { return 0; }
  int SaveSection6() override { return 0; }
  bool UseAlternateBackupName() override { return false; }
  void* OpenScene(const wchar_t*, int, int) override { return nullptr; }
  int FileExists(const char* fileName) override {
    struct stat status;
    return stat(fileName, &status) == 0 ? 1 : 0;
  }
  void UpdateAfterSave(int, int) override {}
  void PrepareSave() override {}
  int NeedsPrepareSave() override { return 0; }
  const char* GetDirectory(int) override { return backupFolder; }
  void RunAfterSaveStep(int) override {}
  int HasAfterSaveSteps() override { return 0; }
  void SetStorage(IStorage* storage) override { storage_ = storage; }
  int WantsBackup() override { return backupFolder != nullptr ? 1 : 0; }
  void SaveFailed() override { failed = true; }
  void AnnounceSection(const char*) override {}
  void MarkSaved() override { saved = true; }
  bool SaveSection5First() override { return true; }

 private:
  int Write(const wchar_t* name, const char* bytes, ULONG size) {
    IStream* stream = nullptr;
    const DWORD mode = STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE;
    if (FAILED(storage_->CreateStream(name, mode, 0, 0, &stream))) return 1;
    ULONG written = 0;
    const bool done = SUCCEEDED(stream->Write(bytes, size, &written)) && written == size;
    stream->Release();
    return done ? 0 : 1;
  }

  IStorage* storage_ = nullptr;
};

bool IsNew(const std::string& path) {
  const compound::Findings findings = compound::CheckFile(path);
  std::ifstream file(path, std::ios::binary);
  const auto holds = [&](const char16_t* name, const char* bytes, std::size_t size) {
    const compound::Entry* entry = findings.Find(name);
    return entry != nullptr && compound::Contents(file, *entry) == std::string(bytes, size);
  };
  return findings.complaints.empty() && findings.entries.size() == 3 &&
         std::memcmp(findings.entries[0].classId.data(), SceneClass, sizeof SceneClass) == 0 &&
         holds(u"Title", Title, sizeof Title) && holds(u"Meshes", Meshes, sizeof Meshes);
}

/// What a folder holds: a word for each entry, in the order of their names.
std::string Look(const Folder& folder) {
  std::set<std::string> words;
  for (const auto& entry : fs::directory_iterator(folder.Root())) {
    const std::string name = entry.path().filename().string();
    const bool link = entry.is_symlink();
    const bool old = !link && folder.Text(name) == Old;
    words.insert(name + (link ? "@" : old ? "=old" : IsNew(entry.path()) ? "=new" : "=bad"));
  }
  std::string all;
  for (const std::string& word : words) all += word + " ";
  return all;
}

/// A save that is about to be made over an old file, and its outcome.
class Scene {
 public:
  enum Kind { Backup, BackupOnOtherFileSystem, NoBackup, ThroughLink };

  explicit Scene(Kind kind)
      : kind_(kind),
        folder_(kind == BackupOnOtherFileSystem ? fs::temp_directory_path().string() : Memory) {
    folder_.Put(kind == ThroughLink ? "real.kel" : "scene.kel", Old);
    if (kind == ThroughLink) fs::create_symlink("real.kel", folder_.Path("scene.kel"));
    if (kind == Backup || kind == ThroughLink) host_.backupFolder = folder_.Root().c_str();
    if (kind == BackupOnOtherFileSystem) host_.backupFolder = other_.Root().c_str();
    path_ = folder_.Path("scene.kel");
  }

  int Save() {
    host_.saved = host_.failed = false;
    SetSaveInterface(&host_);
    return SaveToFileDLL(path_.c_str(), 1, 0, 0);
  }

  /// The demands of this file's head. `tidy`: what was to be deleted could be deleted.
  void ExpectOutcome(int result, bool tidy) {
    const std::string found = Look(folder_) + Look(other_);
    SCOPED_TRACE(found + (host_.saved ? "saved " : "") + (host_.failed ? "failed" : ""));
    const auto has = [&found](const char* text) { return found.find(text) != std::string::npos; };
    EXPECT_EQ(host_.saved, result == 1);
    EXPECT_TRUE(result == 0 || !host_.failed);
    const bool isNew = has(kind_ == ThroughLink ? "real.kel=new" : "scene.kel=new");
    EXPECT_TRUE(isNew == (result == 1) || (isNew && !tidy));
    EXPECT_TRUE(result == 1 || has("=old") || (kind_ == NoBackup && host_.failed));
    EXPECT_FALSE(has("=bad") && (tidy || result == 1 || has("KelBackup.bak=bad")));
    EXPECT_FALSE(has(".kelsave-"));
    EXPECT_EQ(has("scene.kel@"), kind_ == ThroughLink);
    // A file whose permissions could not be asked for has become read-only.
    if (fs::exists(path_)) fs::permissions(path_, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(Save(), 1) << "the next save";
    EXPECT_TRUE(IsNew(path_));
  }

 private:
  static constexpr const char* Memory = "/dev/shm";  // waiting for the disk takes no time there

  const Kind kind_;
  const Folder folder_;
  const Folder other_{Memory};
  CarefulHost host_;
  std::string path_;
};

class SaveFaults : public testing::TestWithParam<Scene::Kind> {};
INSTANTIATE_TEST_SUITE_P(Scenes, SaveFaults,
                         testing::Values(Scene::Backup, Scene::BackupOnOtherFileSystem,
                                         Scene::NoBackup, Scene::ThroughLink));

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
      scene.ExpectOutcome(result, true);
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
          const FailingDisk disk(n, error, mode);
          result = scene.Save();
          reached = disk.HasFailed();
          if (reached) call = disk.Calls()[static_cast<std::size_t>(n) - 1];
        }
        SCOPED_TRACE(std::to_string(n) + " " + call + (once ? "" : " and after") + ": " +
                     std::strerror(error));
        EXPECT_TRUE(reached || result == 1);
        scene.ExpectOutcome(result, once && call != "Remove" && call != "StatusOfLink");
      }
    }
  }
}

// No fault shows what was not waited for.
TEST(SaveOrder, AMovedFileIsOnTheDiskBeforeItIsDeleted) {
  Scene scene(Scene::BackupOnOtherFileSystem);
  const FailingDisk disk;
  EXPECT_EQ(scene.Save(), 1);
  std::string calls;
  for (const std::string& call : disk.Calls()) calls += call + " ";
  EXPECT_NE(calls.find("SetAttributes Sync Show SyncFolder Close Remove "), std::string::npos)
      << calls;
}

}  // namespace
