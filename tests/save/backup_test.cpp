#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/resources.h"
#include "save/kelsave.h"
#include "tests/folder.h"
#include "tests/save/recording_host.h"

namespace {

/// A folder with one old file, and a host that wants its backup there.
struct Situation {
  Folder folder;
  RecordingHost host;
  const char* name = "scene.kel";
  char separator = '\\';

  Situation() { host.directory = folder.Root(); }
};

/// Makes the backup's path this many bytes long; repeated separators count as one.
void MakePathLength(Situation& s, std::size_t length) {
  const std::size_t rest = s.folder.Root().size() + std::string("\\KelBackup.bak").size();
  s.host.directory += std::string(length - rest, '/');
}

struct Row {
  const char* name;
  void (*arrange)(Situation&);
  const char* files;
};

// clang-format off
const Row Rows[] = {
    {"plain", [](Situation&) {}, "KelBackup.bak=old scene.kel=new"},
    {"older backup replaced", [](Situation& s) { s.folder.Put("KelBackup.bak", "older"); },
     "KelBackup.bak=old scene.kel=new"},
    {"alternate name", [](Situation& s) { s.host.alternateName = true; },
     "KelBackupAlternate.bak=old scene.kel=new"},
    {"folder ends in a backslash", [](Situation& s) { s.host.directory += "\\"; },
     "KelBackup.bak=old scene.kel=new"},
    {"rename refused: a folder has the name",
     [](Situation& s) { std::filesystem::create_directory(s.folder.Path("KelBackup.bak")); },
     "KelBackup.bak/ scene.kel=new"},
    {"rename refused: a read-only backup is in the way",
     [](Situation& s) { s.folder.Put("KelBackup.bak", "older", 0444); },
     "KelBackup.bak=older scene.kel=new"},
    {"rename refused: no such folder", [](Situation& s) { s.host.directory += "\\none"; },
     "scene.kel=new"},
    {"path of 511 bytes", [](Situation& s) { MakePathLength(s, 511); },
     "KelBackup.bak=old scene.kel=new"},
    {"path of 512 bytes", [](Situation& s) { MakePathLength(s, 512); }, "scene.kel=new"},
    {"folder longer than the buffer", [](Situation& s) { s.host.directory.append(5000, '/'); },
     "scene.kel=new"},
    {"name cut to 511 bytes never fits",
     [](Situation&) { KelSetHostString(60122, std::string(600, 'x').c_str()); },
     "scene.kel=new"},
    {"no text 60121", [](Situation&) { KelRemoveHostString(60121); }, "scene.kel=new"},
    {"no text 60122: the folder itself is no name for the backup",
     [](Situation&) { KelRemoveHostString(60122); }, "scene.kel=new"},
    {"seven characters spared, in any case", [](Situation& s) { s.name = "kELbACK-1.kel"; },
     "kELbACK-1.kel=new"},
    {"only seven count", [](Situation& s) {
       KelSetHostString(60121, "KelBackX");
       s.name = "KelBackY.kel";
     }, "KelBackY.kel=new"},
    {"six characters are not enough", [](Situation& s) { s.name = "KelBacX.kel"; },
     "KelBacX.kel=new KelBackup.bak=old"},
    {"short text spares a whole name", [](Situation& s) {
       KelSetHostString(60121, "abc");
       s.name = "ABC";
     }, "ABC=new"},
    {"short text spares nothing longer", [](Situation& s) {
       KelSetHostString(60121, "abc");
       s.name = "abcd";
     }, "KelBackup.bak=old abcd=new"},
    {"forward slash: the folder is part of the name", [](Situation& s) {
       s.name = "KelBack-1.kel";
       s.separator = '/';
     }, "KelBack-1.kel=new KelBackup.bak=old"},
    {"a name beyond ASCII", [](Situation& s) { s.name = "\xC3\xA9\xE2\x82\xAC.kel"; },
     "KelBackup.bak=old \xC3\xA9\xE2\x82\xAC.kel=new"},
    {"a name that is no UTF-8", [](Situation& s) { s.name = "\xE9.kel"; },
     "KelBackup.bak=old \xE9.kel=new"},
};
// clang-format on

TEST(Backup, WhatIsLeft) {
  for (const Row& row : Rows) {
    SCOPED_TRACE(row.name);
    Situation s;
    row.arrange(s);
    s.folder.Put(s.name, "old");
    SetSaveInterface(&s.host);
    EXPECT_EQ(SaveToFileDLL((s.folder.Root() + s.separator + s.name).c_str(), 1, 0, 0), 1);
    EXPECT_EQ(s.folder.List(), row.files);
    KelResetHostStrings();
  }
}

}  // namespace
