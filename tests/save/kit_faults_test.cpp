/// The kit for hosts when the disk is full, permissions are missing and the process stops.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

#include "save/kelsave_kit.h"
#include "tests/folder.h"

namespace {

/// Saves a stream of so many bytes.
class BytesSaver : public kel::Saver {
 public:
  std::size_t size = 10;
  std::string backups;  // the folder for them, if it is not the usual one
  std::function<void(IStorage&)> trouble = [](IStorage&) {};

 private:
  std::string BackupFolder(const std::string& path) const override {
    return backups.empty() ? Saver::BackupFolder(path) : backups;
  }
  void WriteScene(IStorage& file) override {
    kel::WriteAll(*kel::CreateStream(file, L"Bytes"), std::string(size, 'b'));
    trouble(file);
  }
};

class KitFaults : public testing::Test {
 protected:
  std::string Save(std::size_t size) {
    saver.size = size;
    return kel::SaveScene(saver, file).reason;
  }
  std::size_t Size(const std::string& path) {
    return kel::ReadAll(*kel::OpenStream(*kel::OpenScene(path), L"Bytes")).size();
  }
  /// Runs this in a process of its own, for which other rules may hold, and ends with its result.
  static bool InAProcess(const std::function<bool()>& act) {
    const pid_t child = fork();
    if (child == 0) _exit(act() ? 0 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
  /// As a user whom permissions bind, which they do not the superuser.
  static bool AsUser(const std::function<bool()>& act) {
    return InAProcess([&] { return (geteuid() != 0 || seteuid(65534) == 0) && act(); });
  }

  const Folder folder;
  const std::string file = folder.Path("scene.kel");
  BytesSaver saver;
};

TEST_F(KitFaults, AFullDisk) {
  EXPECT_EQ("", Save(10));
  EXPECT_TRUE(InAProcess([&] {
    const rlimit limit = {1 << 20, 1 << 20};
    return setrlimit(RLIMIT_FSIZE, &limit) == 0 && Save(5'000'000) == "Bytes: the disk is full";
  }));
  EXPECT_TRUE(kel::RestoreBackup(saver, file));
  EXPECT_EQ(10U, Size(file));
}

TEST_F(KitFaults, MissingPermissions) {
  EXPECT_EQ("", Save(10));
  EXPECT_EQ("", Save(11));
  chmod(folder.Root().c_str(), 0777);
  const Folder shut;
  EXPECT_TRUE(kel::SaveScene(saver, shut.Path("whole.kel")));
  chmod(shut.Path("whole.kel").c_str(), 0666);
  chmod(shut.Root().c_str(), 0555);
  EXPECT_TRUE(
      AsUser([&] { return Save(12) == "the old version cannot be kept: Permission denied"; }));
  EXPECT_TRUE(AsUser([&] {
    saver.backups = folder.Path("elsewhere");
    return kel::SaveScene(saver, shut.Path("whole.kel")).reason ==
           "the old version cannot be kept: Permission denied";
  })) << "a file that can be written, but not moved away";
  chmod(file.c_str(), 0);
  EXPECT_TRUE(
      AsUser([&] { return kel::RestoreBackup(saver, file).reason == "there is no permission"; }));
  chmod(file.c_str(), 0444);
  EXPECT_EQ(11U, Size(file));
  EXPECT_EQ(10U, Size(saver.BackupPath(file)));
  EXPECT_EQ("it is read-only", kel::SaveScene(saver, file, {false, 0}).reason);
  EXPECT_EQ("", Save(12)) << "a read-only file that can be backed up";
  chmod(shut.Root().c_str(), 0755);
}

TEST_F(KitFaults, ASymbolicLink) {
  const std::string link = folder.Path("link.kel");
  ASSERT_EQ(0, symlink("scene.kel", link.c_str()));
  EXPECT_TRUE(kel::SaveScene(saver, link));
  saver.trouble = [](IStorage&) { throw std::runtime_error("trouble"); };
  EXPECT_FALSE(kel::SaveScene(saver, link));
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_TRUE(kel::RestoreBackup(saver, link));
  EXPECT_TRUE(kel::IsWhole(file));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

// Wherever the process stops, also twice, the last whole version comes back.
TEST_F(KitFaults, ACrashDoesNotPushOutTheLastVersion) {
  EXPECT_EQ("", Save(10));
  EXPECT_EQ("", Save(11));
  for (const std::size_t size : {20U, 5'000'000U}) {
    saver.trouble = [](IStorage& root) {
      root.Commit(STGC_DEFAULT);  // what is there can be opened from here on
      _exit(0);
    };
    EXPECT_TRUE(InAProcess([&] { return Save(size).empty() && false; }));
    EXPECT_FALSE(kel::IsWhole(file));
  }
  EXPECT_TRUE(kel::RestoreBackup(saver, file));
  EXPECT_EQ(11U, Size(file));
  EXPECT_NE("", folder.Text("scene.kel.backup/KelBackup.bak.incomplete"));
  // A host that does not ask for the backup and saves on keeps it until that save is whole.
  EXPECT_TRUE(InAProcess([&] { return Save(12).empty() && false; }));
  saver.trouble = [](IStorage&) { throw std::runtime_error("again"); };
  EXPECT_EQ("again", Save(13));
  EXPECT_TRUE(kel::RestoreBackup(saver, file));
  EXPECT_EQ(11U, Size(file));
}

}  // namespace
