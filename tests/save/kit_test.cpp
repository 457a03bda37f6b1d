/// The kit for hosts in situations that a host meets, on every system.
#include "save/kelsave_kit.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <cstring>
#include <functional>

#include "tests/folder.h"

namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr HRESULT CutFile = STG_E_READFAULT;
#else
constexpr HRESULT CutFile = STG_E_DOCFILECORRUPT;
#endif

/// Writes the text into the stream Text, and does in its writers what it is told to.
class TextSaver : public kel::Saver {
 public:
  std::string text = "new";
  std::function<void(IStorage&)> trouble = [](IStorage&) {};  // in section 4
  std::string order;
  std::string backups;  // the folder for them, if it is not the usual one
  using Saver::Fail;
  using Saver::SceneArgument;

 private:
  std::string BackupFolder(const std::string& path) const override {
    return backups.empty() ? Saver::BackupFolder(path) : backups;
  }
  void WriteScene(IStorage& file) override {
    kel::WriteAll(*kel::CreateStream(file, L"Text"), text);
    order += "S";
  }
  void WriteSection1(IStorage&) override { order += "1"; }
  void WriteSection2(IStorage&) override { order += "2"; }
  void WriteSection3(IStorage&) override { order += "3"; }
  void WriteSection4(IStorage& file) override {
    trouble(file);
    order += "4";
  }
  void WriteSection5(IStorage&) override { order += "5"; }
  void WriteSection6(IStorage&) override { order += "6"; }
  bool Section5First() override { return false; }
  void Announce(const char* name) override {
    order += std::string(name) == "Classes Used" ? "A" : "?";
  }
};

class Kit : public testing::Test {
 protected:
  /// What the file holds: the text, or why it cannot be opened.
  static std::string Look(const std::string& path) {
    try {
      return kel::ReadText(*kel::OpenStream(*kel::OpenScene(path), L"Text"));
    } catch (const kel::Error& error) {
      return error.what();
    }
  }
  std::string Save(const std::string& text, const kel::SaveOptions& options = {}) {
    saver.text = text;
    const kel::SaveResult result = kel::SaveScene(saver, file, options);
    EXPECT_EQ(result.outcome == kel::SaveOutcome::Saved, result.reason.empty());
    return result ? "saved" : result.reason;
  }
  std::string Restore() {
    const kel::RestoreResult result = kel::RestoreBackup(saver, file);
    if (result.outcome == kel::RestoreOutcome::NotNeeded) return "not needed";
    return result ? "restored" : result.reason;
  }

  const Folder folder;
  const std::string file = folder.Path("scene.kel");
  TextSaver saver;
};

TEST_F(Kit, SavesAndKeepsTheOldVersion) {
  EXPECT_EQ("saved", Save("one", {true, 7}));
  EXPECT_EQ("S65A4321", saver.order.replace(1, 2, "65"));
  EXPECT_EQ(7, saver.SceneArgument());
  EXPECT_EQ("saved", Save("two"));
  EXPECT_EQ("two", Look(file));
  EXPECT_EQ("one", Look(saver.BackupPath(file)));
  EXPECT_EQ("not needed", Restore());
  EXPECT_EQ("saved", Save("three", {false, 0}));
  EXPECT_EQ("one", Look(saver.BackupPath(file)));
  EXPECT_THROW(kel::ReadAll<int>(*kel::OpenStream(*kel::OpenScene(file), L"Text")), kel::Error);
}

// Of a path with '/' the library compares the folders, too, with the names that it spares.
TEST_F(Kit, KeepsTheOldVersionInAnyFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.Root());
  fs::create_directory("KelBacks");
  for (int save = 0; save < 2; ++save) EXPECT_TRUE(kel::SaveScene(saver, "KelBacks/scene.kel"));
  EXPECT_TRUE(kel::IsWhole(saver.BackupPath("KelBacks/scene.kel")));
  fs::current_path(before);
}

TEST_F(Kit, TurnsWhateverAWriterDoesIntoAReason) {
  const struct {
    std::function<void(TextSaver&, IStorage&)> trouble;
    const char* reason;
  } rows[] = {
      {[](TextSaver&, IStorage&) { throw std::runtime_error("no triangles"); }, "no triangles"},
      {[](TextSaver&, IStorage&) { throw 5; }, "a writer failed and did not say why"},
      {[](TextSaver& s, IStorage&) { s.Fail("first"), s.Fail("second"); }, "first"},
      {[](TextSaver&, IStorage& f) {
         const kel::Stream read = kel::OpenStream(f, L"Text");
         kel::WriteAll(*read, "x", 1);
       },
       "Text: there is no permission"},
  };
  EXPECT_EQ("saved", Save("old"));
  for (const auto& row : rows) {
    saver.order.clear();
    saver.trouble = [&](IStorage& root) { row.trouble(saver, root); };
    EXPECT_EQ(row.reason, Save("new"));
    EXPECT_EQ(std::string::npos, saver.order.find('3')) << "a writer ran after one that failed";
    EXPECT_EQ("there is no such file", Look(file));
    EXPECT_EQ("restored", Restore());
    EXPECT_EQ("old", Look(file));
  }
}

TEST_F(Kit, TellsASaveWithinASave) {
  kel::SaveOutcome inner = kel::SaveOutcome::Saved;
  std::string restored;
  saver.trouble = [&](IStorage&) {
    TextSaver other;
    inner = kel::SaveScene(other, file).outcome;
    restored = Restore();
  };
  EXPECT_EQ("saved", Save("outer"));
  EXPECT_EQ(kel::SaveOutcome::AlreadySaving, inner);
  EXPECT_EQ("a save is running", restored);
  EXPECT_EQ("outer", Look(file));
}

TEST_F(Kit, TakesOnlyAWholeBackupOfThisScene) {
  Save("one");
  Save("two");
  const std::string backup = saver.BackupPath(file);
  const std::string native = folder.Path("scene.kel.backup/KelBackup.bak");
  const auto time = fs::last_write_time(native);
  fs::remove(file);
  fs::last_write_time(native, time + std::chrono::seconds(60));
  EXPECT_EQ("there is no such file, and there is no backup of it", Restore());
  fs::last_write_time(native, time);
  fs::rename(folder.Path("scene.kel.backup"), folder.Path("other.kel.backup"));
  EXPECT_FALSE(kel::RestoreBackup(saver, folder.Path("other.kel")));
  fs::rename(folder.Path("other.kel.backup"), folder.Path("scene.kel.backup"));
  fs::resize_file(native, fs::file_size(native) / 4);
  fs::last_write_time(native, time);
  EXPECT_EQ("the backup: ", Restore().substr(0, 12));
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(Kit, KeepsAFileOfAnotherKindBesideTheBackup) {
  folder.Put("scene.kel", "some text");
  saver.trouble = [](IStorage&) { throw std::runtime_error("trouble"); };
  EXPECT_EQ("trouble", Save("one"));
  EXPECT_EQ("some text", folder.Text("scene.kel"));
  saver.trouble = [](IStorage&) {};
  EXPECT_EQ("saved", Save("two"));
  EXPECT_EQ("some text", folder.Text("scene.kel.backup/KelBackup.bak.incomplete"));
}

// A save that does not fit leaves everything as it was, the older backup too.
TEST_F(Kit, RefusesBeforeAnythingIsTouched) {
  Save("one");
  Save("two");
  const std::string folders = folder.Path("scene.kel.backup");
  {
    const kel::Storage reader = kel::OpenScene(file);
    EXPECT_EQ("it is in use", Save("three"));
  }
#ifdef _WIN32
  {
    const std::ifstream user(folders + "/KelBackup.bak");
    EXPECT_NE(std::string::npos, Save("three").find("the old version cannot be kept: "));
  }
#endif
  fs::permissions(folders + "/KelBackup.bak", fs::perms::owner_read);
  EXPECT_EQ("the old version cannot be kept: the older backup cannot be replaced", Save("three"));
  fs::permissions(folders + "/KelBackup.bak", fs::perms::owner_all);
  EXPECT_EQ("two", Look(file));
  EXPECT_EQ("one", Look(saver.BackupPath(file)));
  const struct {
    std::string path, reason;
  } rows[] = {
      {folder.Root(), "it is a folder"},
      {folder.Path("KELBACKup.bak"), "the old version cannot be kept: the name is one of a backup"},
  };
  fs::copy_file(file, folder.Path("KELBACKup.bak"));
  for (const auto& row : rows) EXPECT_EQ(row.reason, kel::SaveScene(saver, row.path).reason);
}

// A stream whose chain ends early, and two that share their bytes: each of these is good alone, but
// a file of such would take as long as all of them apart.
TEST_F(Kit, LooksAtTheEndOfEachStream) {
  saver.trouble = [](IStorage& root) { kel::WriteAll(*kel::CreateStream(root, L"A"), "a", 1); };
  Save(std::string(100000, 't'));
  EXPECT_TRUE(kel::IsWhole(file));
  const std::string whole = folder.Text("scene.kel");
  const auto with = [&](std::size_t at, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << std::string(whole).replace(at, bytes.size(), bytes);
    return kel::IsWhole(file);
  };
  std::uint32_t fat = 0;
  std::memcpy(&fat, &whole[76], sizeof fat);
  EXPECT_FALSE(with((fat + 1) * 4096U + 4 * 10, "\xFE\xFF\xFF\xFF"));
  const std::size_t text = whole.find(std::string("T\0e\0x\0t\0", 8));
  const std::size_t other = whole.find(std::string("A\0\0\0\0\0\0\0", 8));
  EXPECT_FALSE(with(other + 116, whole.substr(text + 116, 12)));
  EXPECT_EQ(100000U, kel::ReadAll(*kel::OpenStream(*kel::OpenScene(file), L"A")).size());
}

TEST_F(Kit, SaysWhatAPathNamesInsteadOfAScene) {
  Save("good");
  EXPECT_TRUE(kel::IsWhole(file));
  folder.Put("cut", folder.Text("scene.kel").substr(0, 5000));
  const struct {
    std::string path, text;
  } rows[] = {
      {folder.Put("empty", ""), "it is empty"},
      {folder.Put("text", "some text"), "it is no compound file"},
      {folder.Path("cut"), kel::TextOf(CutFile)},
      {folder.Root(), "it is a folder"},
      {folder.Path("none/none"), "there is no such folder"},
  };
  for (const auto& row : rows) {
    std::string reason;
    EXPECT_FALSE(kel::IsWhole(row.path, &reason));
    EXPECT_EQ(row.text, reason);
  }
  EXPECT_EQ("error 0x80030FFF", kel::TextOf(static_cast<HRESULT>(0x80030FFF)));
}

#ifndef _WIN32

// When the disk is full, permissions are missing and the process stops.
class KitFaults : public Kit {
 protected:
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
};

TEST_F(KitFaults, AFullDisk) {
  EXPECT_EQ("saved", Save("old"));
  EXPECT_TRUE(InAProcess([&] {
    const rlimit limit = {1 << 20, 1 << 20};
    return setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
           Save(std::string(5'000'000, 't')) == "Text: the disk is full";
  }));
  EXPECT_TRUE(kel::RestoreBackup(saver, file));
  EXPECT_EQ("old", Look(file));
}

TEST_F(KitFaults, MissingPermissions) {
  EXPECT_EQ("saved", Save("old"));
  EXPECT_EQ("saved", Save("newer"));
  chmod(folder.Root().c_str(), 0777);
  const Folder shut;
  EXPECT_TRUE(kel::SaveScene(saver, shut.Path("whole.kel")));
  chmod(shut.Path("whole.kel").c_str(), 0666);
  chmod(shut.Root().c_str(), 0555);
  EXPECT_TRUE(AsUser(
      [&] { return Save("newest") == "the old version cannot be kept: Permission denied"; }));
  EXPECT_TRUE(AsUser([&] {
    saver.backups = folder.Path("elsewhere");
    return kel::SaveScene(saver, shut.Path("whole.kel")).reason ==
           "the old version cannot be kept: Permission denied";
  })) << "a file that can be written, but not moved away";
  chmod(file.c_str(), 0);
  EXPECT_TRUE(
      AsUser([&] { return kel::RestoreBackup(saver, file).reason == "there is no permission"; }));
  chmod(file.c_str(), 0444);
  EXPECT_EQ("newer", Look(file));
  EXPECT_EQ("old", Look(saver.BackupPath(file)));
  EXPECT_EQ("it is read-only", kel::SaveScene(saver, file, {false, 0}).reason);
  EXPECT_EQ("saved", Save("newest")) << "a read-only file that can be backed up";
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
  EXPECT_EQ("saved", Save("old"));
  EXPECT_EQ("saved", Save("newer"));
  for (const std::size_t size : {20U, 5'000'000U}) {
    saver.trouble = [](IStorage& root) {
      root.Commit(STGC_DEFAULT);  // what is there can be opened from here on
      _exit(0);
    };
    EXPECT_TRUE(InAProcess([&] { return Save(std::string(size, 't')).empty(); }));
    EXPECT_FALSE(kel::IsWhole(file));
  }
  EXPECT_TRUE(kel::RestoreBackup(saver, file));
  EXPECT_EQ("newer", Look(file));
  EXPECT_NE("", folder.Text("scene.kel.backup/KelBackup.bak.incomplete"));
  // A host that does not ask for the backup and saves on keeps it until that save is whole.
  EXPECT_TRUE(InAProcess([&] { return Save("newest").empty(); }));
  saver.trouble = [](IStorage&) { throw std::runtime_error("again"); };
  EXPECT_EQ("again", Save("newest"));
  EXPECT_TRUE(kel::RestoreBackup(saver, file));
  EXPECT_EQ("newer", Look(file));
}

#endif

}  // namespace
