#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/window.h"
#include "save/kelsave_files.h"
#include "tests/failing_disk.h"
#include "tests/save/recording_host.h"

namespace {

// The calls of a save, in pieces.
const std::string Looked = "NeedsPrepareSave FileExists:scene.kel";
const std::string Backed =
    Looked + " WantsBackup FileExists:scene.kel GetDirectory:13 UseAlternateBackupName";
const std::string Handed = " SetStorage OpenScene:8206,7 SaveScene";
const std::string Lower =
    " Announce:Classes Used SaveSection4 SaveSection3 SaveSection2 SaveSection1";
const std::string Writers = Handed + " SaveSection5First SaveSection5 SaveSection6" + Lower;
const std::string WritersSwapped = Handed + " SaveSection5First SaveSection6 SaveSection5" + Lower;
const std::string Saved = " MarkSaved UpdateAfterSave:0,1 HasAfterSaveSteps";
const std::string Kept = "KelBackup.bak=old";

struct Row {
  const char* name;
  void (*arrange)(Situation&);
  int result;
  std::string calls;
  std::string files;
};

// clang-format off
const Row Rows[] = {
    {"new file", [](Situation& s) { std::filesystem::remove(s.folder.Path("scene.kel")); },
     1, Looked + " WantsBackup FileExists:scene.kel" + Writers + Saved, "scene.kel=new"},
    {"prepared", [](Situation& s) { s.host.needsPrepare = 1; s.noBackup = 1; },
     1, "NeedsPrepareSave PrepareSave FileExists:scene.kel" + Writers + Saved, "scene.kel=new"},
    {"not notified", [](Situation& s) { s.notify = 0; },
     1, Backed + Writers + " HasAfterSaveSteps", Kept + " scene.kel=new"},
    {"steps after the save", [](Situation& s) { s.host.hasAfterSteps = 1; },
     1, Backed + Writers + Saved + " RunAfterSaveStep:0 RunAfterSaveStep:1",
     Kept + " scene.kel=new"},
    {"fails without a backup", [](Situation& s) { s.noBackup = 1; s.host.failing = "SaveScene"; },
     0, Looked + Handed + " SaveFailed", ""},
    {"read-only file replaced", [](Situation& s) { s.folder.Put("scene.kel", "old", 0444); },
     1, Backed + Writers + Saved, Kept + " scene.kel=new!"},
    {"creation refused, read-only",
     [](Situation& s) { s.folder.Put("scene.kel", "old", 0444); s.noBackup = 1; },
     0, Looked, "scene.kel=old!"},
    {"host keeps the storage of a failed save",
     [](Situation& s) { s.host.keepsStorage = true; s.host.failing = "SaveSection1"; },
     0, Backed + Writers + " SaveFailed", Kept},
};
// clang-format on

TEST(SaveDriver, Protocol) {
  for (const Row& row : Rows) {
    SCOPED_TRACE(row.name);
    Situation s;
    row.arrange(s);
    KelForgetCursorHistory();
    EXPECT_EQ(s.Save(), row.result);
    EXPECT_EQ(s.host.calls, row.calls);
    EXPECT_EQ(KelCursorHistory(), (std::vector<int>{32514, 32512}));
    s.host.kept.reset();
    EXPECT_EQ(s.folder.List(), row.files);
  }
}

// One that is written is not finished yet, one that is read is in use: it becomes no backup, no
// save replaces it, and the backup that there is stays.
TEST(SaveDriver, AFileThatIsOpenStays) {
  Situation s;
  s.host.keepsStorage = true;
  EXPECT_EQ(s.Save(), 1);
  EXPECT_EQ(s.host.calls, Backed + Writers + Saved);
  EXPECT_EQ(s.Save(), 0);
  s.host.kept.reset();
  const std::string whole = s.folder.Text("scene.kel");
  kel::Storage reader = kel::OpenScene(s.path);
  EXPECT_EQ(s.Save(), 0);
  EXPECT_EQ(s.folder.List(), Kept + " scene.kel=new");
  EXPECT_EQ(s.folder.Text("scene.kel"), whole);
  reader.reset();
  EXPECT_EQ(s.Save(), 1);
  s.host.kept.reset();
  EXPECT_EQ(s.folder.List(), "KelBackup.bak=new scene.kel=new");
}

TEST(SaveDriver, NoWriterFollowsOneThatFails) {
  for (const bool section5First : {true, false}) {
    std::string all = Backed;
    all.append(section5First ? Writers : WritersSwapped).append(" ");
    for (const std::string failing : {"SaveScene", "SaveSection5", "SaveSection6", "SaveSection4",
                                      "SaveSection3", "SaveSection2", "SaveSection1"}) {
      Situation s;
      s.host.section5First = section5First;
      s.host.failing = failing;
      EXPECT_EQ(s.Save(), 0);
      // The blank tells the writer's name from that of the question that begins like it.
      const std::size_t end = all.find(" " + failing + " ") + failing.size() + 1;
      EXPECT_EQ(s.host.calls, all.substr(0, end) + " SaveFailed");
      EXPECT_EQ(s.folder.List(), Kept);
    }
  }
}

// Another process saves under the same name at the first moment at which it can.
TEST(SaveDriver, AFailedSaveDeletesNoFileOfAnother) {
  Situation s;
  s.host.failing = "SaveSection1";
  FailingDisk disk;
  bool isDone = false;
  disk.before = [&s, &isDone](const std::string&) {
    if (isDone || s.host.calls.find("SaveSection1") == std::string::npos) return;
    const int file = open(s.folder.Path("scene.kel").c_str(), O_WRONLY | O_CREAT, 0666);
    isDone = flock(file, LOCK_EX | LOCK_NB) == 0;
    if (isDone) {
      EXPECT_EQ(ftruncate(file, 0), 0);
      EXPECT_EQ(write(file, "theirs", 6), 6);
    }
    close(file);
  };
  EXPECT_EQ(s.Save(), 0);
  EXPECT_EQ(s.folder.Text("scene.kel"), "theirs");
}

TEST(SaveDriver, NoInterface) {
  EXPECT_EQ(SetSaveInterface(nullptr), 1);
  KelForgetCursorHistory();
  EXPECT_EQ(SaveToFileDLL("scene.kel", 1, 0, 0), 0);
  EXPECT_TRUE(KelCursorHistory().empty());
}

// Nothing is caught: the wait cursor stays, and every later save is taken for a nested one. In a
// process of its own, because nothing clears the flag any more.
TEST(SaveDriverDeathTest, AThrowingHost) {
  Situation s;
  s.host.throwing = "SaveSection4";
  const auto saveTwice = [&s] {
    EXPECT_THROW(s.Save(), std::runtime_error);
    EXPECT_EQ(s.Save(), 1);
    EXPECT_EQ(s.host.calls, "");
    EXPECT_EQ(KelCurrentCursor(), 32514);
    _exit(HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(saveTwice(), testing::ExitedWithCode(0), "");
}

}  // namespace
