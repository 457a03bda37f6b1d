/// The checker can fail: each way of spoiling one field of a file that the library wrote draws a
/// complaint of the right grade, and streams that it does not concern stay trusted.

#include "tools/compound_check/compound_checker.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/folder.h"
#include "tests/platform/storage_model.h"
#include "tools/compound_check/compound_bytes.h"

namespace {

using compound::Parameters;

constexpr std::uint64_t Free = 0xFFFFFFFF, End = 0xFFFFFFFE;
constexpr DWORD Mode = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

void Put(std::string& bytes, std::size_t offset, int width, std::uint64_t value) {
  for (int i = 0; i < width; ++i, value >>= 8) {
    bytes[offset + static_cast<std::size_t>(i)] = static_cast<char>(value & 0xFF);
  }
}

/// Holds the storage B with the empty stream x, and the streams A (4096 bytes) and CCC (100).
std::string GoodFile(ULONG sector) {
  const Folder folder;
  IStorage* root = model::CreateFile(folder.Path("good"), sector);
  IStorage* inner = nullptr;
  EXPECT_EQ(S_OK, root->CreateStorage(L"B", Mode, 0, 0, &inner));
  const auto write = [](IStorage* storage, const wchar_t* name, ULONG size) {
    IStream* stream = nullptr;
    EXPECT_EQ(S_OK, storage->CreateStream(name, Mode, 0, 0, &stream));
    const std::string bytes(size, static_cast<char>(*name));  // all different
    EXPECT_EQ(S_OK, stream->Write(bytes.data(), size, nullptr));
    stream->Release();
  };
  write(inner, L"x", 0);
  inner->Release();
  write(root, L"A", 4096);
  write(root, L"CCC", 100);
  root->Release();
  return folder.Text("good");
}

compound::Findings CheckText(const std::string& file, const Parameters& parameters = {}) {
  std::istringstream stream(file);
  return compound::Check(stream, parameters);
}

/// Where something of a file begins that has not been spoiled yet.
std::size_t PlaceOf(const std::string& file, std::size_t sector, const std::string& what) {
  const auto at = [&](std::size_t field) { return (compound::Word(file, field) + 1U) * sector; };
  if (what == "header") return 0;
  if (what == "FAT") return at(76);
  if (what == "mini FAT") return at(60);
  for (std::size_t entry = at(48);; entry += 128) {
    std::string name;
    for (std::size_t i = entry; file[i] != '\0'; i += 2) name += file[i];
    if (name == what) return entry;
  }
}

struct Spoiled {
  const char* place;
  std::size_t offset;
  int width;
  std::uint64_t value;
  bool damaged;
  const char* complaint;
  std::size_t sector = 512;
};

constexpr bool Damaged = true, Unusual = false;

// clang-format off
const Spoiled SpoiledFields[] = {
    {"header", 0, 1, 0xD1,     Damaged, "header: this is no compound file [offset 0x0"},
    {"header", 44, 4, 111,     Damaged, "DIFAT: does not name all sectors of the FAT"},
    {"header", 60, 4, End,     Damaged, "/CCC: leads to a small sector that the file does not have"},
    {"header", 68, 4, 500,     Damaged, "DIFAT: its chain of sectors runs in a circle or out of the file"},
    {"header", 80, 4, 6,       Unusual, "DIFAT: names sectors beyond"},
    {"FAT", 4 * 13, 4, End,    Unusual, "FAT: 1 sectors are taken that the file does not have"},
    {"mini FAT", 4, 4, 0,      Damaged, "/CCC: its chain of small sectors runs in a circle"},
    {"Root Entry", 116, 4, 0,  Damaged, "/A: has a sector in common with mini stream"},
    {"Root Entry", 120, 4, 900, Unusual, "mini stream: its size is not that of its sectors"},
    {"B",  76, 4, 7,           Damaged, "/B: leads to an unused entry"},
    {"B",  76, 4, Free,        Damaged, "no storage holds \"x\""},
    {"A", 0, 2, 'b',           Damaged, "/: two of its elements are called "},
    {"A", 64, 2, 8,            Unusual, "out of order: a search by name may miss something"},
    {"A", 120, 4, 4095,        Damaged, "/CCC: has a small sector in common with /A"},
    {"A", 124, 4, 1,           Damaged, "/A: its size is 4294971392 bytes", 4096},
    {"x", 68, 4, 1,            Damaged, "/B: leads to an entry that has its place already"},
    {"", 100, 1, 1,            Unusual, "directory: 1 unused entries are not empty"},
};
// clang-format on

TEST(CompoundChecker, GradesEachSpoiledField) {
  const std::string good[] = {GoodFile(512), GoodFile(4096)};
  for (const std::string& file : good) EXPECT_EQ("", CheckText(file).Text());
  for (const Spoiled& spoiled : SpoiledFields) {
    std::string file = good[spoiled.sector / 4096];
    const std::size_t place = PlaceOf(file, spoiled.sector, spoiled.place);
    Put(file, place + spoiled.offset, spoiled.width, spoiled.value);
    const compound::Findings findings = CheckText(file);
    EXPECT_NE(std::string::npos, findings.Text().find(spoiled.complaint))
        << "expected: " << spoiled.complaint << "\nfound:\n"
        << findings.Text();
    EXPECT_EQ(spoiled.damaged, findings.IsDamaged()) << spoiled.complaint << "\n"
                                                     << findings.Text();
  }
}

TEST(CompoundChecker, GradesLengths) {
  const std::string good = GoodFile(512);
  const std::size_t length = good.size();
  EXPECT_NE("", CheckText(good, {4096, 3 * 512}).Text()) << "data in the range lock";
  EXPECT_NE("", CheckText(good + "x").Text());
  std::string cut = good;  // the last sector of A is a new one, of which 100 bytes are there
  const std::size_t fat = PlaceOf(good, 512, "FAT");
  Put(cut, fat + 4 * 6, 4, length / 512 - 1);
  Put(cut, fat + 4 * (length / 512 - 1), 4, End);
  cut.resize(length + 100);
  EXPECT_NE(std::string::npos, CheckText(cut).Text().find("/A: is cut off by the end"));
  for (std::size_t shorter = 0; shorter < length; ++shorter) {
    EXPECT_TRUE(CheckText(good.substr(0, shorter)).IsDamaged()) << shorter;
  }
}

// Any single byte outside the streams set to other values: a stream that is not called damaged, and
// has its name and its size still, has its bytes.
TEST(CompoundChecker, TrustsOnlyStreamsThatHaveTheirBytes) {
  const std::string good = GoodFile(512);
  const compound::Findings before = CheckText(good);
  std::istringstream goodStream(good);
  const auto isContent = [&](std::size_t offset) {
    for (const compound::Entry& entry : before.entries) {
      for (const compound::Extent& extent : entry.extents) {
        if (offset - extent.offset < extent.length) return true;
      }
    }
    return false;
  };
  std::size_t damaged = 0;
  for (std::size_t offset = 0; offset < good.size(); ++offset) {
    if (isContent(offset)) continue;
    for (const int value : {0, 0xFF, good[offset] ^ 1}) {
      std::string file = good;
      file[offset] = static_cast<char>(value);
      std::istringstream stream(file);
      const compound::Findings findings = compound::Check(stream);
      if (findings.IsDamaged()) ++damaged;
      for (const compound::Entry& entry : findings.entries) {
        const compound::Entry* was = before.Find(entry.path);
        if (entry.damaged || was == nullptr || was->size != entry.size) continue;
        EXPECT_EQ(Contents(goodStream, *was), Contents(stream, entry)) << offset << " " << value;
      }
      ASSERT_LT(findings.complaints.size(), 110U);
    }
  }
  EXPECT_GT(damaged, 300U);
}

}  // namespace
