/// The kit for hosts in situations that a host meets, on every system.
#include "save/kelsave_kit.h"

#include <gtest/gtest.h>

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
  using Saver::Fail;
  using Saver::SceneArgument;

 private:
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

}  // namespace
