#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/window.h"
#include "save/kelsave.h"
#include "tests/folder.h"
#include "tests/save/recording_host.h"

namespace {

/// A save that is about to be called: an old file of the text "old" lies in the folder.
struct Situation {
  Folder folder;
  RecordingHost host;
  std::string fileName = folder.Root() + "\\scene.kel";
  int notify = 1;
  int noBackup = 0;
  rlim_t room = RLIM_INFINITY;  // the longest file that the process may write

  Situation() { folder.Put("scene.kel", "old"); }
  void RemoveOld() const { std::filesystem::remove(folder.Path("scene.kel")); }
};

// The calls of a save, in pieces.
const std::string Looked = "NeedsPrepareSave FileExists:scene.kel";
const std::string Backed =
    Looked + " WantsBackup FileExists:scene.kel GetDirectory:13 UseAlternateBackupName";
const std::string Handed = " SetStorage OpenScene:Scene,8206,7 SaveScene";
const std::string Upper = " SaveSection5First SaveSection5 SaveSection6";
const std::string Label = " Announce:Classes Used";
const std::string Lower = Label + " SaveSection4 SaveSection3 SaveSection2 SaveSection1";
const std::string Writers = Handed + Upper + Lower;
const std::string Marked = " MarkSaved UpdateAfterSave:0,1";
const std::string Saved = Marked + " HasAfterSaveSteps";
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
    {"old file replaced", [](Situation&) {},
     1, Backed + Writers + Saved, Kept + " scene.kel=new"},
    {"new file", [](Situation& s) { s.RemoveOld(); },
     1, Looked + " WantsBackup FileExists:scene.kel" + Writers + Saved, "scene.kel=new"},
    {"no backup asked for", [](Situation& s) { s.noBackup = 1; },
     1, Looked + Writers + Saved, "scene.kel=new"},
    {"no backup wanted", [](Situation& s) { s.host.wantsBackup = 0; },
     1, Looked + " WantsBackup" + Writers + Saved, "scene.kel=new"},
    {"prepared", [](Situation& s) { s.host.needsPrepare = 1; s.noBackup = 1; },
     1, "NeedsPrepareSave PrepareSave FileExists:scene.kel" + Writers + Saved, "scene.kel=new"},
    {"section 6 first", [](Situation& s) { s.host.section5First = false; },
     1, Backed + Handed + " SaveSection5First SaveSection6 SaveSection5" + Lower + Saved,
     Kept + " scene.kel=new"},
    {"not notified", [](Situation& s) { s.notify = 0; },
     1, Backed + Writers + " HasAfterSaveSteps", Kept + " scene.kel=new"},
    {"steps after the save", [](Situation& s) { s.host.hasAfterSteps = 1; },
     1, Backed + Writers + Saved + " RunAfterSaveStep:0 RunAfterSaveStep:1",
     Kept + " scene.kel=new"},
    {"section 6 fails first",
     [](Situation& s) { s.host.section5First = false; s.host.failing = "SaveSection6"; },
     0, Backed + Handed + " SaveSection5First SaveSection6 SaveFailed", Kept},
    {"section 5 fails last",
     [](Situation& s) { s.host.section5First = false; s.host.failing = "SaveSection5"; },
     0, Backed + Handed + " SaveSection5First SaveSection6 SaveSection5 SaveFailed", Kept},
    {"fails without a backup", [](Situation& s) { s.noBackup = 1; s.host.failing = "SaveScene"; },
     0, Looked + Handed + " SaveFailed", ""},
    {"read-only file replaced", [](Situation& s) { s.folder.Put("scene.kel", "old", 0444); },
     1, Backed + Writers + Saved, Kept + " scene.kel=new!"},
    {"read-only file, scene fails",
     [](Situation& s) { s.folder.Put("scene.kel", "old", 0444); s.host.failing = "SaveScene"; },
     0, Backed + Handed + " SaveFailed", Kept},
    {"creation refused, read-only",
     [](Situation& s) { s.folder.Put("scene.kel", "old", 0444); s.noBackup = 1; },
     0, Looked, "scene.kel=old!"},
    {"creation refused, no folder",
     [](Situation& s) { s.fileName = s.folder.Root() + "\\none\\scene.kel"; },
     0, Looked + " WantsBackup FileExists:scene.kel", "scene.kel=old"},
    {"creation refused, backup stays", [](Situation& s) { s.room = 1024; }, 0, Backed, Kept},
    {"host keeps the storage", [](Situation& s) { s.host.keepsStorage = true; },
     1, Backed + Writers + Saved, Kept + " scene.kel=new"},
    {"host keeps the storage of a failed save",
     [](Situation& s) { s.host.keepsStorage = true; s.host.failing = "SaveSection1"; },
     0, Backed + Writers + " SaveFailed", Kept},
};
// clang-format on

TEST(SaveDriver, Protocol) {
  for (const Row& row : Rows) {
    SCOPED_TRACE(row.name);
    Situation s;
    s.host.directory = s.folder.Root();
    row.arrange(s);
    SetSaveInterface(&s.host);
    KelForgetCursorHistory();
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit lowered{std::min(s.room, limit.rlim_cur), limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &lowered);
    EXPECT_EQ(SaveToFileDLL(s.fileName.c_str(), s.notify, s.noBackup, 7), row.result);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(s.host.calls, row.calls);
    EXPECT_EQ(KelCursorHistory(), (std::vector<int>{32514, 32512}));
    EXPECT_EQ(s.host.ReleaseKept(), 0U);
    EXPECT_EQ(s.folder.List(), row.files);
  }
}

// Such a file is not finished yet: it becomes no backup, and no save replaces it.
TEST(SaveDriver, AFileThatTheHostKeepsOpenStays) {
  Situation s;
  s.host.directory = s.folder.Root();
  s.host.keepsStorage = true;
  SetSaveInterface(&s.host);
  EXPECT_EQ(SaveToFileDLL(s.fileName.c_str(), 1, 0, 7), 1);
  EXPECT_EQ(SaveToFileDLL(s.fileName.c_str(), 1, 0, 7), 0);
  EXPECT_EQ(s.host.ReleaseKept(), 0U);
  EXPECT_EQ(s.folder.List(), "scene.kel=new");
  EXPECT_EQ(SaveToFileDLL(s.fileName.c_str(), 1, 0, 7), 1);
  EXPECT_EQ(s.host.ReleaseKept(), 0U);
  EXPECT_EQ(s.folder.List(), "KelBackup.bak=new scene.kel=new");
}

TEST(SaveDriver, NoWriterFollowsOneThatFails) {
  for (const std::string failing : {"SaveScene", "SaveSection5", "SaveSection6", "SaveSection4",
                                    "SaveSection3", "SaveSection2", "SaveSection1"}) {
    Situation s;
    s.host.directory = s.folder.Root();
    s.host.failing = failing;
    SetSaveInterface(&s.host);
    EXPECT_EQ(SaveToFileDLL(s.fileName.c_str(), 1, 0, 7), 0);
    const std::string all = Backed + Writers + " ";
    // The blank tells the writer's name from that of the question that begins like it.
    const std::size_t end = all.find(" " + failing + " ") + failing.size() + 1;
    EXPECT_EQ(s.host.calls, all.substr(0, end) + " SaveFailed");
    EXPECT_EQ(s.folder.List(), Kept);
  }
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
  SetSaveInterface(&s.host);
  const auto saveTwice = [&s] {
    bool thrown = false;
    try {
      SaveToFileDLL(s.fileName.c_str(), 1, 1, 7);
    } catch (const std::runtime_error&) {
      thrown = true;
    }
    const std::string before = s.host.calls;
    const int second = SaveToFileDLL(s.fileName.c_str(), 1, 1, 7);
    const bool asDescribed =
        thrown && second == 1 && s.host.calls == before && KelCurrentCursor() == 32514;
    _exit(asDescribed ? 0 : 1);
  };
  EXPECT_EXIT(saveTwice(), testing::ExitedWithCode(0), "");
}

}  // namespace
