/// What takes gigabytes with the real parameters, or many files: DIFAT, locked sector, the limits
/// of version 3, and the trees of every size. The checker knows each rule of the layout.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "compound/format.h"
#include "compound/name.h"
#include "platform/compound_storage.h"
#include "tests/folder.h"
#include "tools/compound_check/compound_checker.h"
#include "tools/compound_check/compound_names.h"

namespace {

constexpr DWORD Mode = STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr CompoundParameters Usual{512, 4096, 0x7FFFFF00};

std::string Pattern(std::size_t size, unsigned seed) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) {
    seed = seed * 1664525U + 1013904223U;
    byte = static_cast<char>(seed >> 24);
  }
  return bytes;
}

/// One compound file, and what the checker finds in it.
class StorageLayout : public testing::Test {
 protected:
  void Create(const CompoundParameters& given) {
    parameters = {given.miniCutoff, given.lockOffset};
    ASSERT_EQ(S_OK, CreateCompoundFile(path.c_str(), L"x", given, &root));
  }
  IStream* MakeStream(const std::wstring& name) {
    IStream* stream = nullptr;
    EXPECT_EQ(S_OK, root->CreateStream(name.c_str(), Mode, 0, 0, &stream));
    return stream;
  }
  void ExpectValid() {
    EXPECT_EQ(0U, root->Release());
    findings = compound::CheckFile(path, parameters);
    EXPECT_EQ("", findings.Text());
  }
  std::string Stream(const char16_t* name) const {
    std::ifstream file(path, std::ios::binary);
    const compound::Entry* entry = findings.Find(name);
    return entry == nullptr ? "no such stream" : Contents(file, *entry);
  }

  const Folder folder;
  const std::string path = folder.Path("layout.cfb");
  IStorage* root = nullptr;
  compound::Parameters parameters;
  compound::Findings findings;
};

TEST_F(StorageLayout, IsReadBackByItsTables) {
  const struct {
    const char* what;
    CompoundParameters parameters;
    std::size_t size;      // of each of the two streams, written in turns
    std::size_t fileSize;  // at least, for the matter to arise
  } rows[] = {
      {"DIFAT of version 3", Usual, 9'000'000, 18'000'000},
      {"lock in the data", {4096, 4096, 0x100000 - 0x100}, 3'000'000, 0x100000},
      {"lock in the tables", {4096, 4096, 200 * 4096 + 3840}, 98 * 4096 + 4000, 201 * 4096},
      {"small cutoff", {512, 128, 0x7FFFFF00}, 129, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    Create(row.parameters);
    const std::string contents[] = {Pattern(row.size, 1), Pattern(row.size, 2)};
    IStream* streams[] = {MakeStream(L"A"), MakeStream(L"B")};
    for (std::size_t at = 0; at < row.size; at += 70'001) {
      const auto count = static_cast<ULONG>(std::min<std::size_t>(row.size - at, 70'001));
      for (const int i : {0, 1}) {
        ASSERT_EQ(S_OK, streams[i]->Write(&contents[i][at], count, nullptr));
      }
      if (at > 200'000) continue;
      ASSERT_EQ(S_OK, root->Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE));
    }
    for (IStream* stream : streams) EXPECT_EQ(0U, stream->Release());
    ExpectValid();
    EXPECT_TRUE(Stream(u"A") == contents[0] && Stream(u"B") == contents[1]);
    EXPECT_GE(std::filesystem::file_size(path), row.fileSize);
  }
}

TEST_F(StorageLayout, Version3EndsBelowTheLock) {
  Create({512, 4096, 0x40000 - 0x100});
  IStream* stream = MakeStream(L"A");
  const std::string content = Pattern(300'000, 3);
  ULONG written = 0;
  EXPECT_EQ(STG_E_MEDIUMFULL, stream->Write(content.data(), 300'000, &written));
  EXPECT_GT(written, 250'000U);
  EXPECT_EQ(0U, stream->Release());
  ExpectValid();
  EXPECT_LE(std::filesystem::file_size(path), 0x40000U - 0x200);
  EXPECT_EQ(content.substr(0, written), Stream(u"A"));
}

TEST_F(StorageLayout, TreesOfEverySizeAreRedBlack) {
  for (int count = 1; count < 140 && !HasFailure(); ++count) {
    SCOPED_TRACE(count);
    Create(Usual);
    for (int i = 0; i < count; ++i) MakeStream(std::to_wstring(i))->Release();
    ExpectValid();
  }
}

TEST(StorageNames, EveryUnitHasItsUpperCase) {
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
    const auto letter = static_cast<char16_t>(unit);
    EXPECT_EQ(compound::UpperCase(letter), Uppercase(letter)) << unit;
  }
}

}  // namespace
