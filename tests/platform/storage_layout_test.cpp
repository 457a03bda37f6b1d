/// What takes gigabytes with the real parameters, or many files: the locked sector, the limits of
/// version 3, and the trees of every size. The checker knows each rule of the layout.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "compound/format.h"
#include "compound/name.h"
#include "platform/compound_storage.h"
#include "save/kelsave_files.h"
#include "tests/failing_memory.h"
#include "tests/folder.h"
#include "tests/platform/storage_model.h"

namespace {

// Wherever the locked sector lies, in the data or in the tables, nothing is in it; version 3 ends
// before it, and what does not fit any more is refused.
TEST(StorageLayout, LockedSectorAnywhere) {
  const Folder folder;
  const std::string path = folder.Path("file");
  for (unsigned locked = 20; locked < 120 && !HasFailure(); locked += 3) {
    for (const std::uint32_t sectorSize : {512U, 4096U}) {
      SCOPED_TRACE(std::to_string(locked) + " " + std::to_string(sectorSize));
      const std::uint32_t cutoff = locked % 2 == 0 ? 4096 : 128;
      const std::uint64_t lock = (locked + 2) * std::uint64_t{sectorSize} - 256;
      IStorage* root = nullptr;
      ASSERT_EQ(S_OK, CreateCompoundFile(path.c_str(), L"x", {sectorSize, cutoff, lock}, &root));
      model::Faults faults{true, {cutoff, lock}};
      const bool isSmall = sectorSize == 512;
      const auto fill = [&](IStorage& open, model::Node& node) {
        const HRESULT full = isSmall ? STG_E_MEDIUMFULL : S_OK;
        EXPECT_EQ(full, model::Put(open, node, L"rest", std::string(1 << 20, 'r')));
      };
      const auto model = model::RandomRun(root, path, locked, 100, &faults, fill);
      model::ExpectFileHolds(path, *model, faults.parameters);
      for (const HRESULT fault : faults.results) EXPECT_EQ(STG_E_MEDIUMFULL, fault);
      const std::uint64_t size = std::filesystem::file_size(path);
      EXPECT_TRUE(!isSmall || (size <= lock && size + 4096 > lock)) << size;
    }
  }
}

// A random file seldom ends just before it.
TEST(StorageLayout, LockedSectorInTheTables) {
  const Folder folder;
  const std::string path = folder.Path("file");
  constexpr std::uint32_t locked = 40;
  constexpr std::uint64_t lock = (locked + 2) * 4096 - 256;
  for (std::size_t sectors = locked - 8; sectors < locked + 2; ++sectors) {
    IStorage* root = nullptr;
    model::Node model{true};
    ASSERT_EQ(S_OK, CreateCompoundFile(path.c_str(), L"x", {4096, 4096, lock}, &root));
    EXPECT_EQ(S_OK, model::Put(*root, model, L"stream", std::string(sectors * 4096, 's')));
    EXPECT_EQ(0U, root->Release());
    SCOPED_TRACE(sectors);
    model::ExpectFileHolds(path, model, {4096, lock});
  }
}

// Memory ends in a write that does not fit: only what it tells as written has changed. Elements
// that were made in their order are found then, too.
TEST(StorageLayout, NoMemory) {
  const Folder folder;
  const std::string bytes(1 << 20, 'l');
  for (int n = 0, hasFailed = 1; hasFailed != 0; ++n) {
    model::Node model{true};
    IStorage* opened = nullptr;
    ASSERT_EQ(S_OK,
              CreateCompoundFile(folder.Path("file").c_str(), L"x", {512, 64, 29000}, &opened));
    const kel::Storage root(opened);
    const kel::Stream stream = kel::CreateStream(*root, L"long");
    for (int i = 10; i < 50; ++i) {
      EXPECT_EQ(S_OK, model::Put(*root, model, std::to_wstring(i), std::string(512, 'o')));
    }
    for (int i = 10; i < 50; i += 2) root->DestroyElement(std::to_wstring(i).c_str());
    ULONG written = 0;
    {
      const FailingMemory memory(n, n % 2 == 0);
      EXPECT_TRUE(FAILED(stream->Write(bytes.data(), 1 << 20, &written)));
      EXPECT_EQ(S_OK, root->DestroyElement(L"49"));
      hasFailed = memory.Reached() ? 1 : 0;
    }
    EXPECT_EQ(S_OK, stream->Seek({}, STREAM_SEEK_SET, nullptr));
    EXPECT_EQ(bytes.substr(0, written), kel::ReadText(*stream)) << n;
  }
}

TEST(StorageLayout, TreesOfEverySizeAreRedBlack) {
  const Folder folder;
  for (int count = 1; count < 140 && !HasFailure(); ++count) {
    kel::Storage root(model::CreateFile(folder.Path("file"), 512));
    for (int i = 0; i < count; ++i) kel::CreateStream(*root, std::to_wstring(i));
    root.reset();
    EXPECT_EQ("", compound::CheckFile(folder.Path("file")).Text()) << count;
  }
}

TEST(StorageNames, EveryUnitHasItsUpperCase) {
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
    const auto letter = static_cast<char16_t>(unit);
    EXPECT_EQ(compound::UpperCase(letter), Uppercase(letter)) << unit;
  }
}

}  // namespace
