// The DLL in a 32-bit process, loaded and called by name as a host made with another compiler
// would.

#include <gtest/gtest.h>
#include <objbase.h>
#include <windows.h>
#include <winternl.h>

#include <climits>
#include <cstdint>
#include <filesystem>
#include <string>

#include "save/kelsave_files.h"
#include "tests/folder.h"
#include "tests/windows/host_table.h"

namespace fs = std::filesystem;

namespace {

constexpr CLSID SceneClass = {
    0x5A3E0C91, 0x2B7D, 0x4F16, {0x8C, 0x4A, 0xD0, 0x7E, 0x93, 0xB1, 0xF2, 0x58}};

class Dll : public testing::Test {
 protected:
  void SetUp() override {
    Load();
    ASSERT_TRUE(save != nullptr && setInterface != nullptr);
    KeepBackupsIn(folder);
    ASSERT_EQ(setInterface(host.Object()), 1);
  }

  void TearDown() override { FreeLibrary(library); }

  void KeepBackupsIn(const Folder& place) {
    host.answers[13] = static_cast<int>(reinterpret_cast<std::intptr_t>(place.Root().c_str()));
  }

  void Load() {
    library = LoadLibraryA("kelsave.dll");
    Find(save, "SaveToFileDLL");
    Find(setInterface, "SetSaveInterface");
  }

  template <typename Function>
  void Find(Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  }

  HMODULE library = nullptr;
  int (*save)(const char*, int, int, int) = nullptr;
  int (*setInterface)(void*) = nullptr;
  HostTable host;
  const Folder folder;
  const std::string file = folder.Root() + "\\scene.kel";
};

TEST_F(Dll, SavesANewFileInTheFixedOrderAndNoneWithinIt) {
  for (const std::size_t slot : {12U, 15U, 17U, 21U}) host.answers[slot] = 1;
  int inner = -1;
  host.whenSaveScene = [&] { inner = save("never made", 1, 0, 0); };
  EXPECT_EQ(save(file.c_str(), 1, 0, 7), 1);
  EXPECT_EQ(inner, 1);
  EXPECT_FALSE(fs::exists("never made"));
  EXPECT_EQ(host.calls, "12 11 9(" + file + ") 17 9(" + file +
                            ") 16(pointer) 8(Scene,8206,7) 0(null) 21 5 6 19(Classes Used) "
                            "4 3 2 1 20 10(0,1) 15 14(0) 14(1) ");
  EXPECT_TRUE(host.waiting);
  EXPECT_EQ(GetCursor(), LoadCursorA(nullptr, MAKEINTRESOURCEA(32512)));
  STATSTG status{};
  EXPECT_EQ(kel::OpenScene(file)->Stat(&status, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(status.clsid, SceneClass);
}

// A truth value is the lowest byte of the register; what stands above it means nothing.
TEST_F(Dll, KeepsABackupWithoutTheReadOnlyAttribute) {
  const struct {
    const char* name;
    int answer;  // of slots 7 and 21
    const char* files;
    std::string calls;  // a part of them
  } rows[] = {
      {"scene.kel", 0x12345600, "KelBackup.bak=old scene.kel=new!",
       "13(13) 7 16(pointer) 8(Scene,8206,0) 0(null) 21 6 5 19"},
      {"scene.kel", 0x12345601, "KelBackupAlternate.bak=old scene.kel=new!", "21 5 6 19"},
      {"kELbACK of mine.kel", 0, "kELbACK of mine.kel=new!", ".kel) 16(pointer)"},
  };
  for (const std::size_t slot : {9U, 17U}) host.answers[slot] = 1;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.calls);
    const Folder place;
    place.Put(row.name, "old", 0444);
    KeepBackupsIn(place);
    host.answers[7] = host.answers[21] = row.answer;
    host.calls.clear();
    const std::string name = place.Root() + "\\" + row.name;
    EXPECT_EQ(save(name.c_str(), 0, 0, 0), 1);
    EXPECT_NE(host.calls.find(row.calls), std::string::npos) << host.calls;
    EXPECT_EQ(place.List(), row.files);
    SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_NORMAL);
  }
}

// The library's allocator, as its table of imports has it, and one that fails.
using Allocator = void*(size_t);
Allocator* realAllocator = nullptr;
int allocationsLeft = 0;
bool failsOnce = false;

void* FailingAllocator(size_t size) {
  if (allocationsLeft-- > 0) return realAllocator(size);
  if (failsOnce) allocationsLeft = INT_MAX;
  return nullptr;
}

void UseAllocator(HMODULE library, Allocator* from, Allocator* to) {
  auto* base = reinterpret_cast<BYTE*>(library);
  auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(
      base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
  const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
  auto* imports = reinterpret_cast<Allocator**>(base + table.VirtualAddress);
  for (DWORD i = 0; i < table.Size / sizeof *imports; ++i) {
    DWORD access = 0;
    if (imports[i] != from) continue;
    VirtualProtect(&imports[i], sizeof *imports, PAGE_READWRITE, &access);
    imports[i] = to;
  }
}

TEST_F(Dll, SavesAgainAfterLackOfMemory) {
  realAllocator = reinterpret_cast<Allocator*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("msvcrt.dll"), "malloc")));
  for (const std::size_t slot : {9U, 17U}) host.answers[slot] = 1;
  for (int row = 0;; ++row) {
    SCOPED_TRACE(row);
    folder.Put("scene.kel", "old");
    failsOnce = row % 2 == 0;
    const int left = allocationsLeft = row / 2;
    UseAllocator(library, realAllocator, FailingAllocator);
    const int result = save(file.c_str(), 0, 0, 0);
    UseAllocator(library, FailingAllocator, realAllocator);
    if (result == 1) {
      EXPECT_GE(allocationsLeft, 0) << "saved without memory";
      EXPECT_GE(left, 2) << "nothing failed";
      break;
    }
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(fs::exists(file) || fs::exists(folder.Path("KelBackup.bak")));
    EXPECT_EQ(save(file.c_str(), 0, 0, 0), 1) << "the next save";
    EXPECT_EQ(StgIsStorageFile(fs::path(file).c_str()), S_OK);
  }
}

// The name goes through the process's code page into the file system.
TEST_F(Dll, TakesNamesInTheCodePage) {
  if (GetACP() != 1252) GTEST_SKIP() << "code page " << GetACP();
  EXPECT_EQ(save((folder.Root() + "\\sc\xE8ne.kel").c_str(), 0, 1, 0), 1);
  EXPECT_EQ(StgIsStorageFile((fs::path(folder.Root()) / L"sc\u00E8ne.kel").c_str()), S_OK);
}

TEST_F(Dll, MeasuresRealWindows) {
  int (*revise)(HWND, HWND, RECT*, RECT*, int);
  Find(revise, "ReviseKelProcess");
  const auto make = [](DWORD style, int x, int y, int width, int height, HWND parent) {
    return CreateWindowA("STATIC", "", style, x, y, width, height, parent, nullptr, nullptr,
                         nullptr);
  };
  const HWND parent = make(WS_POPUP, 40, 30, 300, 100, nullptr);
  const HWND track = make(WS_CHILD, 10, 20, 200, 16, parent);
  const HWND thumb = make(WS_CHILD, 60, 22, 24, 12, parent);
  RECT trackArea{}, thumbArea{};
  EXPECT_EQ(revise(track, thumb, &trackArea, &thumbArea, 2), 174);
  EXPECT_TRUE(trackArea.right == 200 && trackArea.bottom == 16);
  EXPECT_TRUE(thumbArea.left == 60 && thumbArea.bottom == 34);
  DestroyWindow(parent);
}

// Of the loader's record of a module, which begins with a link to the next, the base is word 6, the
// flags are word 13.
ULONG FlagsOf(HMODULE library) {
  auto* loader = reinterpret_cast<ULONG*>(NtCurrentTeb()->ProcessEnvironmentBlock->Ldr);
  auto* record = reinterpret_cast<ULONG*>(loader[3]);
  while (record[6] != reinterpret_cast<ULONG>(library)) record = reinterpret_cast<ULONG*>(*record);
  return record[13];
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
  Load();
  EXPECT_EQ(save(file.c_str(), 0, 1, 0), 0) << "a new start knows of no interface";
}

}  // namespace
