// The DLL in a 32-bit process, loaded and called by name as a host made with another compiler
// would.

#include <gtest/gtest.h>
#include <objbase.h>
#include <windows.h>
#include <winternl.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/windows/host_table.h"

namespace fs = std::filesystem;

namespace {

template <typename Function>
Function* Find(HMODULE library, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

class Dll : public testing::Test {
 protected:
  void SetUp() override {
    library = LoadLibraryA("kelsave.dll");
    ASSERT_NE(library, nullptr);
    save = Find<int(const char*, int, int, int)>(library, "SaveToFileDLL");
    setInterface = Find<int(void*)>(library, "SetSaveInterface");
    ASSERT_TRUE(save != nullptr && setInterface != nullptr);
    folder = fs::temp_directory_path() / ("kelsave dll " + std::to_string(GetCurrentProcessId()));
    fs::create_directories(folder);
    file = (folder / "scene.kel").string();
    backups = folder.string();
    host.answers[13] = static_cast<int>(reinterpret_cast<std::intptr_t>(backups.c_str()));
    ASSERT_EQ(setInterface(host.Object()), 1);
  }

  void TearDown() override {
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL);
    fs::remove_all(folder);
    FreeLibrary(library);
  }

  void WriteOldFile() const { std::ofstream(file) << "old"; }

  HMODULE library = nullptr;
  int (*save)(const char*, int, int, int) = nullptr;
  int (*setInterface)(void*) = nullptr;
  HostTable host;
  fs::path folder;
  std::string file;
  std::string backups;
};

TEST_F(Dll, SavesANewFileInTheFixedOrder) {
  host.answers[12] = 1;
  host.answers[15] = 1;
  host.answers[17] = 1;
  host.answers[21] = 1;
  EXPECT_EQ(save(file.c_str(), 1, 0, 7), 1);
  EXPECT_EQ(host.calls, "12 11 9(" + file + ") 17 9(" + file +
                            ") 16(pointer) 8(Scene,8206,7) 0(null) 21 5 6 19(Classes Used) "
                            "4 3 2 1 20 10(0,1) 15 14(0) 14(1) ");
  EXPECT_TRUE(host.waiting);
  EXPECT_EQ(GetCursor(), LoadCursorA(nullptr, MAKEINTRESOURCEA(32512)));
  EXPECT_EQ(StgIsStorageFile(fs::path(file).c_str()), S_OK);
}

// A truth value is the lowest byte of the register; what stands above it means nothing.
TEST_F(Dll, ReadsTruthValuesFromTheLowestByte) {
  WriteOldFile();
  host.answers[9] = 1;
  host.answers[17] = 1;
  host.answers[7] = 0x12345600;
  host.answers[21] = 0x12345600;
  EXPECT_EQ(save(file.c_str(), 0, 0, 0), 1);
  EXPECT_NE(host.calls.find("13(13) 7 16"), std::string::npos) << host.calls;
  EXPECT_NE(host.calls.find("21 6 5 19"), std::string::npos) << host.calls;
  EXPECT_TRUE(fs::exists(folder / "KelBackup.bak"));
  host.answers[7] = 0x12345601;
  EXPECT_EQ(save(file.c_str(), 0, 0, 0), 1);
  EXPECT_TRUE(fs::exists(folder / "KelBackupAlternate.bak"));
}

TEST_F(Dll, KeepsNoBackupOfAFileWithTheSparedPrefix) {
  const std::string spared = (folder / "kELbACK of mine.kel").string();
  std::ofstream(spared) << "old";
  host.answers[9] = 1;
  host.answers[17] = 1;
  EXPECT_EQ(save(spared.c_str(), 0, 0, 0), 1);
  EXPECT_EQ(host.calls.find(" 13"), std::string::npos) << host.calls;
  EXPECT_FALSE(fs::exists(folder / "KelBackup.bak"));
}

TEST_F(Dll, CarriesTheReadOnlyAttributeOver) {
  WriteOldFile();
  SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY);
  host.answers[9] = 1;
  host.answers[17] = 1;
  EXPECT_EQ(save(file.c_str(), 0, 0, 0), 1);
  const std::string backup = (folder / "KelBackup.bak").string();
  EXPECT_EQ(GetFileAttributesA(file.c_str()) & FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(GetFileAttributesA(backup.c_str()) & FILE_ATTRIBUTE_READONLY, 0U);
}

TEST_F(Dll, DeletesTheFileOfAFailedSave) {
  host.answers[4] = -1;
  EXPECT_EQ(save(file.c_str(), 1, 1, 0), 0);
  EXPECT_TRUE(host.calls.ends_with("19(Classes Used) 4 18 ")) << host.calls;
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(Dll, RefusesASaveWithinASave) {
  int inner = -1;
  host.whenSaveScene = [&] { inner = save("never made", 1, 0, 0); };
  EXPECT_EQ(save(file.c_str(), 0, 1, 0), 1);
  EXPECT_EQ(inner, 1);
  EXPECT_FALSE(fs::exists("never made"));
}

TEST_F(Dll, FailsWithoutAnInterfaceOrAFolder) {
  EXPECT_EQ(save((folder / "none" / "scene.kel").string().c_str(), 0, 1, 0), 0);
  EXPECT_EQ(host.calls.find("18"), std::string::npos);
  EXPECT_EQ(setInterface(nullptr), 1);
  EXPECT_EQ(save(file.c_str(), 0, 1, 0), 0);
}

// The name goes through the process's code page into the file system.
TEST_F(Dll, TakesNamesInTheCodePage) {
  const std::wstring wide = folder.wstring() + L"\\sc\u00E8ne.kel";
  char narrow[MAX_PATH];
  BOOL lossy = FALSE;
  ASSERT_GT(WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, narrow, MAX_PATH, nullptr,
                                GetACP() == CP_UTF8 ? nullptr : &lossy),
            0);
  if (lossy != FALSE) GTEST_SKIP() << "code page " << GetACP() << " has no such letter";
  EXPECT_EQ(save(narrow, 0, 1, 0), 1);
  EXPECT_EQ(StgIsStorageFile(wide.c_str()), S_OK);
}

TEST_F(Dll, OffersTheMembersUnderTheirDecoratedNames) {
  using Record = std::array<std::int32_t, 6>;
  auto* assign =
      Find<Record* __thiscall(Record*, const Record*)>(library, "??4HelpSys@@QAEAAV0@ABV0@@Z");
  auto* clickHelp = Find<int __thiscall(Record*)>(library, "?getClickHelp@HelpSys@@QAEHXZ");
  auto* window = Find<HWND __thiscall(Record*)>(library, "?getHelpHWnd@HelpSys@@QAEPAUHWND__@@XZ");
  auto* setWindow =
      Find<void __thiscall(Record*, HWND)>(library, "?setHelpHWnd@HelpSys@@QAEXPAUHWND__@@@Z");
  ASSERT_TRUE(assign != nullptr && clickHelp != nullptr && window != nullptr &&
              setWindow != nullptr);
  const Record source = {-1, 2, 3, 4, 5, 6};
  Record record{};
  EXPECT_EQ(assign(&record, &source), &record);
  EXPECT_EQ(record, source);
  setWindow(&record, GetDesktopWindow());
  EXPECT_EQ(window(&record), GetDesktopWindow());
  EXPECT_EQ(clickHelp(&record), -1);
}

TEST_F(Dll, MeasuresRealWindows) {
  auto* revise = Find<int(HWND, HWND, RECT*, RECT*, int)>(library, "ReviseKelProcess");
  HWND parent =
      CreateWindowA("STATIC", "", WS_POPUP, 40, 30, 300, 100, nullptr, nullptr, nullptr, nullptr);
  HWND track =
      CreateWindowA("STATIC", "", WS_CHILD, 10, 20, 200, 16, parent, nullptr, nullptr, nullptr);
  HWND thumb =
      CreateWindowA("STATIC", "", WS_CHILD, 60, 22, 24, 12, parent, nullptr, nullptr, nullptr);
  ASSERT_TRUE(parent != nullptr && track != nullptr && thumb != nullptr);
  RECT trackArea{};
  RECT thumbArea{};
  EXPECT_EQ(revise(track, thumb, &trackArea, &thumbArea, 2), 174);
  EXPECT_EQ(trackArea.right, 200);
  EXPECT_EQ(trackArea.bottom, 16);
  EXPECT_EQ(thumbArea.left, 60);
  EXPECT_EQ(thumbArea.bottom, 34);
  DestroyWindow(parent);
}

// The loader's record of a module, as far as its flags; in the process's list of modules.
struct LoadedModule {
  LIST_ENTRY links;
  LIST_ENTRY memoryLinks;
  LIST_ENTRY initialisationLinks;
  void* base;
  void* entry;
  ULONG size;
  UNICODE_STRING fullName;
  UNICODE_STRING name;
  ULONG flags;
};

ULONG FlagsOf(HMODULE library) {
  PEB_LDR_DATA* loader = NtCurrentTeb()->ProcessEnvironmentBlock->Ldr;
  auto* first = reinterpret_cast<LIST_ENTRY*>(reinterpret_cast<char*>(loader) + 0x0C);
  for (LIST_ENTRY* link = first->Flink; link != first; link = link->Flink) {
    const auto* module = reinterpret_cast<const LoadedModule*>(link);
    if (module->base == library) return module->flags;
  }
  return 0;
}

TEST_F(Dll, HasAskedForNoThreadNotifications) {
  constexpr ULONG NoThreadCalls = 0x40000;
  EXPECT_EQ(FlagsOf(library) & NoThreadCalls, NoThreadCalls);
  EXPECT_EQ(FlagsOf(GetModuleHandleA(nullptr)) & NoThreadCalls, 0U);
}

TEST_F(Dll, LeavesTheHostAloneWhenItIsUnloaded) {
  EXPECT_EQ(save(file.c_str(), 0, 1, 0), 1);
  host.calls.clear();
  EXPECT_TRUE(FreeLibrary(library));
  EXPECT_EQ(GetModuleHandleA("kelsave.dll"), nullptr);
  EXPECT_EQ(host.calls, "");
  library = LoadLibraryA("kelsave.dll");
  ASSERT_NE(library, nullptr);
  save = Find<int(const char*, int, int, int)>(library, "SaveToFileDLL");
  EXPECT_EQ(save(file.c_str(), 0, 1, 0), 0) << "a new start knows of no interface";
}

}  // namespace
