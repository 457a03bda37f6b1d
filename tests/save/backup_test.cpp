#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/resources.h"
#include "tests/save/recording_host.h"

namespace {

constexpr const char* Scene = "\\scene.kel";
constexpr const char* Both = "KelBackup.bak=old scene.kel=new";
constexpr const char* Only = "scene.kel=new";

void Nothing(Situation&) {}

/// Makes the backup's path `Length` bytes long; repeated separators count as one.
template <std::size_t Length>
void LongPath(Situation& s) {
  const std::size_t rest = s.folder.Root().size() + std::string("\\KelBackup.bak").size();
  s.host.directory += std::string(Length - rest, '/');
}

/// An older backup of this text.
template <unsigned Mode>
void OlderBackup(Situation& s) {
  s.folder.Put("KelBackup.bak", "older", Mode);
}

template <unsigned Text>
void WithoutText(Situation&) {
  KelRemoveHostString(Text);
}

const struct {
  const char* name;
  const char* file;  // that is saved
  void (*arrange)(Situation&);
  const char* files;  // that lie there afterwards
} Rows[] = {
    {"older backup", Scene, OlderBackup<0644>, Both},
    {"rename refused: the older backup is read-only", Scene, OlderBackup<0444>,
     "KelBackup.bak=older scene.kel=new"},
    {"rename refused: a folder has the name", Scene,
     [](Situation& s) { std::filesystem::create_directory(s.folder.Path("KelBackup.bak")); },
     "KelBackup.bak/ scene.kel=new"},
    {"older backup is a link that leads nowhere", Scene,
     [](Situation& s) { std::filesystem::create_symlink("none", s.folder.Path("KelBackup.bak")); },
     Both},
    {"alternate name", Scene, [](Situation& s) { s.host.alternateName = true; },
     "KelBackupAlternate.bak=old scene.kel=new"},
    {"path of 511 bytes", Scene, LongPath<511>, Both},
    {"path of 512 bytes", Scene, LongPath<512>, Only},
    {"no text 60121", Scene, WithoutText<60121>, Only},
    {"no text 60122: the folder itself is no name", Scene, WithoutText<60122>, Only},
    {"spared name", "\\kELbACK-1.kel", Nothing, "kELbACK-1.kel=new"},
    {"not spared", "\\KelBacX.kel", Nothing, "KelBacX.kel=new KelBackup.bak=old"},
    {"spared by the host's text", "\\ABC", [](Situation&) { KelSetHostString(60121, "abc"); },
     "ABC=new"},
    {"no bare name is compared", "/KelBack-1.kel", Nothing, "KelBack-1.kel=new KelBackup.bak=old"},
    {"in the host's characters", "\\\xC3\xA9\xE2\x82\xAC.kel", Nothing,
     "KelBackup.bak=old \xC3\xA9\xE2\x82\xAC.kel=new"},
};

TEST(Backup, WhatIsLeft) {
  for (const auto& row : Rows) {
    SCOPED_TRACE(row.name);
    Situation s(row.file);
    row.arrange(s);
    EXPECT_EQ(s.Save(), 1);
    EXPECT_EQ(s.folder.List(), row.files);
    EXPECT_FALSE(std::filesystem::exists("KelBackup.bak"));  // where the process is
    KelResetHostStrings();
  }
}

}  // namespace
