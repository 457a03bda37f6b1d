#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/resources.h"
#include "tests/save/recording_host.h"

namespace {

constexpr const char* Old = "KelBackup.bak=old ";

/// Makes the backup's path this many bytes long; repeated separators count as one.
void MakePathLength(Situation& s, std::size_t length) {
  const std::size_t rest = s.folder.Root().size() + std::string("\\KelBackup.bak").size();
  s.host.directory += std::string(length - rest, '/');
}

TEST(Backup, WhatIsLeft) {
  struct {
    const char* name;
    void (*arrange)(Situation&);
    std::string backup;  // what lies beside the new file
  } const rows[] = {
      {"older backup", [](Situation& s) { s.folder.Put("KelBackup.bak", "older"); }, Old},
      {"alternate name", [](Situation& s) { s.host.alternateName = true; },
       "KelBackupAlternate.bak=old "},
      {"rename refused: a folder has the name",
       [](Situation& s) { std::filesystem::create_directory(s.folder.Path("KelBackup.bak")); },
       "KelBackup.bak/ "},
      {"rename refused: a read-only backup is in the way",
       [](Situation& s) { s.folder.Put("KelBackup.bak", "older", 0444); }, "KelBackup.bak=older "},
      {"older backup is a link that leads nowhere",
       [](Situation& s) {
         std::filesystem::create_symlink("none", s.folder.Path("KelBackup.bak"));
       },
       Old},
      {"path of 511 bytes", [](Situation& s) { MakePathLength(s, 511); }, Old},
      {"path of 512 bytes", [](Situation& s) { MakePathLength(s, 512); }, ""},
      {"no text 60121", [](Situation&) { KelRemoveHostString(60121); }, ""},
      {"no text 60122: the folder itself is no name for the backup",
       [](Situation&) { KelRemoveHostString(60122); }, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Situation s;
    row.arrange(s);
    EXPECT_EQ(s.Save(), 1);
    EXPECT_EQ(s.folder.List(), row.backup + "scene.kel=new");
    EXPECT_FALSE(std::filesystem::exists("KelBackup.bak"));  // where the process is
    KelResetHostStrings();
  }
}

TEST(Backup, SparedNames) {
  struct {
    const char* spared;  // null: the text that the library has itself
    const char* file;
    const char* files;
  } const rows[] = {
      {nullptr, "\\kELbACK-1.kel", "kELbACK-1.kel=new"},
      {nullptr, "\\KelBacX.kel", "KelBacX.kel=new KelBackup.bak=old"},
      {"abc", "\\ABC", "ABC=new"},
      {nullptr, "/KelBack-1.kel", "KelBack-1.kel=new KelBackup.bak=old"},  // no bare name
      {nullptr, "\\\xC3\xA9\xE2\x82\xAC.kel", "KelBackup.bak=old \xC3\xA9\xE2\x82\xAC.kel=new"},
  };
  for (const auto& row : rows) {
    Situation s(row.file);
    if (row.spared != nullptr) KelSetHostString(60121, row.spared);
    EXPECT_EQ(s.Save(), 1);
    EXPECT_EQ(s.folder.List(), row.files);
    KelResetHostStrings();
  }
}

}  // namespace
