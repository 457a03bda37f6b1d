/// A fault in every place of a save, one at a time and all from one on. What is demanded each time:
/// - The result says what is on the disk: 1 is a whole new version, 0 is none; and the host has
///   been told the same.
/// - The old version is whole somewhere, unless the new one is or a writer failed after the backup
///   was not made.
/// - Nothing else lies about, and the next save works.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <kelsave.h>
#include "tests/folder.h"
#include "tests/save/failing_memory.h"
#include "tools/compound_check/compound_checker.h"

namespace fs = std::filesystem;

namespace {

constexpr char Meshes[700000] = "more than a piece of the file";
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

  explicit Scene(Kind kind) : kind_(kind) {
    folder_.Put(kind == ThroughLink ? "real.kel" : "scene.kel", Old);
    if (kind == ThroughLink) fs::create_symlink("real.kel", folder_.Path("scene.kel"));
    if (kind != NoBackup) host_.backupFolder = Backups().Root().c_str();
    path_ = folder_.Path("scene.kel");
  }

  int Save() {
    host_.saved = host_.failed = false;
    SetSaveInterface(&host_);
    return SaveToFileDLL(path_.c_str(), 1, 0, 0);
  }

  /// The demands of this file's head.
  void ExpectOutcome(int result) {
    const std::string found = Look(folder_) + (&Backups() == &folder_ ? "" : Look(other_));
    const auto has = [&found](const char* text) { return found.find(text) != std::string::npos; };
    const std::string scene = kind_ == ThroughLink ? "real.kel" : "scene.kel";
    EXPECT_EQ(host_.saved, result == 1) << found;
    EXPECT_TRUE(result == 0 || !host_.failed) << found;
    EXPECT_EQ(has((scene + "=new").c_str()), result == 1) << found;
    EXPECT_TRUE(result == 1 || has("=old") || host_.failed) << found;
    EXPECT_FALSE(has("=bad") || has(".kelsave-")) << found;
    EXPECT_EQ(has("scene.kel@"), kind_ == ThroughLink) << found;
    EXPECT_EQ(Save(), 1) << "the next save, after " << found;
    EXPECT_TRUE(IsNew(path_));
  }

 private:
  const Folder& Backups() const { return kind_ == BackupOnOtherFileSystem ? other_ : folder_; }

  const Kind kind_;
  const Folder folder_{"/dev/shm"};  // waiting for the disk takes no time there
  const Folder other_;
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
      scene.ExpectOutcome(result);
    }
  }
}

}  // namespace
