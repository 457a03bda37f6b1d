/// The checker can fail: a file laid out by hand is accepted, and each way of spoiling one field
/// of it draws its own complaint.

#include "tools/compound_check/compound_checker.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tools/compound_check/compound_names.h"

namespace {

using compound::Parameters;

constexpr std::uint64_t Free = 0xFFFFFFFF, End = 0xFFFFFFFE;

void Put(std::string& bytes, std::size_t offset, int width, std::uint64_t value) {
  for (int i = 0; i < width; ++i, value >>= 8) {
    bytes[offset + static_cast<std::size_t>(i)] = static_cast<char>(value & 0xFF);
  }
}

// Sectors: 0 FAT, 1 and 2 directory, 3 mini FAT, 4 mini stream, 5 on stream "A" of 4096 bytes.
// Directory: 0 root, 1 storage "BB" (black), 2 "A" (red), 3 "CCC" (red, 100 bytes in the mini
// stream), 4 "BB/x" (empty), the rest unused.
std::string GoodFile(std::size_t sector) {
  const std::size_t streamSectors = 4096 / sector;
  const std::size_t sectors = 5 + streamSectors;
  std::string file((1 + sectors) * sector, '\0');
  const auto header = [&](std::size_t offset, int width, std::uint64_t value) {
    Put(file, offset, width, value);
  };
  header(0, 8, 0xE11AB1A1E011CFD0);
  header(24, 4, sector == 512 ? 0x0003003E : 0x0004003E);
  header(28, 4, sector == 512 ? 0x0009FFFE : 0x000CFFFE);
  header(32, 2, 6);
  header(40, 4, sector == 512 ? 0 : 2);
  header(44, 8, 1 | 1ULL << 32);
  header(56, 8, 4096 | 3ULL << 32);
  header(64, 8, 1 | End << 32);
  for (std::size_t i = 1; i < 109; ++i) header(76 + 4 * i, 4, Free);

  const std::uint64_t fat[] = {0xFFFFFFFD, 2, End, End, End};
  for (std::size_t i = 0; i < sector / 4; ++i) {
    const std::uint64_t next = i + 1 < sectors ? i + 1 : i + 1 == sectors ? End : Free;
    Put(file, sector + 4 * i, 4, i < 5 ? fat[i] : next);
    Put(file, 4 * sector + 4 * i, 4, i == 0 ? 1 : i == 1 ? End : Free);
  }
  struct Row {
    std::u16string_view name;
    unsigned type, color;
    std::uint64_t left, right, child, start, size;
  };
  // clang-format off
  const Row rows[] = {
      {u"Root Entry", 5, 1, Free, Free, 1,    4,   128},
      {u"BB",         1, 1, 2,    3,    4,    0,   0},
      {u"A",          2, 0, Free, Free, Free, 5,   4096},
      {u"CCC",        2, 0, Free, Free, Free, 0,   100},
      {u"x",          2, 1, Free, Free, Free, End, 0},
  };
  // clang-format on
  for (std::size_t i = 0; i < 2 * sector / 128; ++i) {
    const std::size_t entry = 2 * sector + 128 * i;
    const Row row = i < 5 ? rows[i] : Row{u"", 0, 0, Free, Free, Free, 0, 0};
    for (std::size_t j = 0; j < row.name.size(); ++j) Put(file, entry + 2 * j, 2, row.name[j]);
    if (row.type != 0) Put(file, entry + 64, 2, 2 * row.name.size() + 2);
    Put(file, entry + 66, 2, row.type | row.color << 8);
    Put(file, entry + 68, 8, row.left | row.right << 32);
    Put(file, entry + 76, 4, row.child);
    Put(file, entry + 116, 4, row.start);
    Put(file, entry + 120, 8, row.size);
  }
  for (std::size_t i = 0; i < 4096; ++i) Put(file, 6 * sector + i, 1, i % 251);
  for (std::size_t i = 0; i < 100; ++i) Put(file, 5 * sector + i, 1, i + 100);
  return file;
}

compound::Findings CheckText(const std::string& file, const Parameters& parameters = {}) {
  std::istringstream stream(file);
  return compound::Check(stream, parameters);
}

TEST(CompoundChecker, AcceptsAGoodFile) {
  for (const std::size_t sector : {512U, 4096U}) {
    std::istringstream file(GoodFile(sector));
    const compound::Findings findings = compound::Check(file);
    EXPECT_EQ("", findings.Text());
    ASSERT_EQ(5U, findings.entries.size());
    const std::string mini = Contents(file, *findings.Find(u"CCC"));
    EXPECT_EQ("de", mini.substr(0, 2));
    EXPECT_EQ(100U, mini.size());
    const std::string big = Contents(file, *findings.Find(u"A"));
    EXPECT_EQ(4096U, big.size());
    EXPECT_EQ(4095 % 251, static_cast<unsigned char>(big.back()));
    EXPECT_NE(nullptr, findings.Find(u"BB/x"));
  }
}

enum Place : std::size_t {
  Header,
  Fat,
  Directory = 2,
  MiniFat = 4
};  // the number of sectors before it

struct Spoiled {
  Place place;
  std::size_t offset;
  int width;
  std::uint64_t value;
  const char* complaint;
  std::size_t sector = 512;
};

// clang-format off
const Spoiled SpoiledFields[] = {
    {Header, 0, 1, 0xD1,           "signature expected 0xe11ab1a1e011cfd0 found 0xe11ab1a1e011cfd1"},
    {Header, 23, 1, 1,             "class id expected 0 found 0x100000000000000"},
    {Header, 24, 2, 0x21,          "minor version expected 0x3e found 0x21"},
    {Header, 26, 2, 5,             "major version expected 0x4 found 0x5"},
    {Header, 28, 2, 0xFEFF,        "byte order expected 0xfffe found 0xfeff"},
    {Header, 30, 2, 12,            "sector shift expected 0x9 found 0xc"},
    {Header, 30, 2, 9,             "sector shift expected 0xc found 0x9", 4096},
    {Header, 32, 2, 7,             "mini sector shift expected 0x6 found 0x7"},
    {Header, 39, 1, 1,             "reserved expected 0 found 0x10000000000"},
    {Header, 40, 4, 2,             "directory sectors expected 0 found 0x2"},
    {Header, 40, 4, 0,             "directory sectors expected 0x2 found 0", 4096},
    {Header, 44, 4, 2,             "FAT: sector 0xffffffff expected one below 0xd"},
    {Header, 44, 4, 0,             "DIFAT: unused word expected 0xffffffff found 0"},
    {Header, 48, 4, 2,             "directory sectors expected 0x1 found 0x2", 4096},
    {Header, 48, 4, End,           "directory: sectors found 0"},
    {Header, 52, 4, 1,             "transaction signature expected 0 found 0x1"},
    {Header, 56, 4, 512,           "cutoff expected 0x1000 found 0x200"},
    {Header, 60, 4, End,           "covers the mini stream, words found 0"},
    {Header, 64, 4, 2,             "mini FAT sectors expected 0x1 found 0x2"},
    {Header, 68, 4, 5,             "DIFAT: end of chain expected 0xfffffffe found"},
    {Header, 72, 4, 1,             "DIFAT sectors expected 0 found 0x1"},
    {Header, 76, 4, 1,             "mark of a FAT sector expected 0xfffffffd found"},
    {Header, 80, 4, 6,             "unused word expected 0xffffffff found 0x6"},
    {Header, 600, 1, 1,            "zeros after 0x200", 4096},
    {Fat, 0, 4, End,               "mark of a FAT sector expected 0xfffffffd found 0xfffffffe"},
    {Fat, 4, 4, End,               "sector 0x2 without owner expected 0xffffffff found 0xfffffffe"},
    {Fat, 4, 4, 1,                 "directory: sector 0x1 expected unowned, found owner directory:"},
    {Fat, 8, 4, 3,                 "sector 0x3 expected unowned"},
    {Fat, 4 * 8, 4, End,           "\"A\": sectors expected 0x8 found 0x4"},
    {Fat, 4 * 8, 4, Free,          "\"A\": sector 0xffffffff expected one below 0xd"},
    {Fat, 4 * 12, 4, 13,           "\"A\": sector 0xd expected one below 0xd"},
    {Fat, 4 * 13, 4, End,          "sector 0xd beyond the end expected 0xffffffff found 0xfffffffe"},
    {MiniFat, 0, 4, End,           "\"CCC\": mini sectors expected 0x2 found 0x1"},
    {MiniFat, 4, 4, 0,             "\"CCC\": mini sector 0 expected unowned, found owner"},
    {MiniFat, 8, 4, End,           "mini sector 0x2 beyond the end expected 0xffffffff"},
    {Directory, 0, 2, 'r',         "name of the root"},
    {Directory, 66, 1, 1,          "type found 0x1"},
    {Directory, 67, 1, 0,          "\"Root Entry\": color expected 0x1 found 0"},
    {Directory, 68, 4, 2,          "left expected 0xffffffff found 0x2"},
    {Directory, 76, 4, 2,          "color of the top expected 0x1 found 0"},
    {Directory, 76, 4, 99,         "link to an entry found 0x63"},
    {Directory, 100, 1, 1,         "created expected 0 found 0x1"},
    {Directory, 116, 4, 3,         "mini FAT: sector 0x3 expected unowned, found owner mini stream:"},
    {Directory, 120, 4, 640,       "mini stream: sectors expected 0x2 found 0x1"},
    {Directory, 120, 4, 129,       "mini sectors whole, bytes over expected 0 found 0x1"},
    {Directory, 128 + 67, 1, 2,    "color found 0x2"},
    {Directory, 128 + 68, 4, 3,    "reached a second time"},
    {Directory, 128 + 68, 4, Free, "reachable entry 2 \"A\""},
    {Directory, 128 + 68, 8, 3 | 2ULL << 32, "\"A\": order: expected before entry 1 \"BB\""},
    {Directory, 128 + 68, 4, 1,    "reached a second time"},
    {Directory, 128 + 76, 4, 7,    "linked although unused"},
    {Directory, 128 + 116, 4, 1,   "start expected 0 found 0x1"},
    {Directory, 128 + 120, 4, 1,   "size expected 0 found 0x1"},
    {Directory, 256, 2, '/',       "character of the name found 0x2f"},
    {Directory, 256 + 2, 2, 'A',   "name padding expected 0 found 0x41"},
    {Directory, 256 + 62, 2, 'A',  "name padding expected 0 found 0x41"},
    {Directory, 256 + 64, 2, 66,   "name length found 0x42"},
    {Directory, 256 + 64, 2, 3,    "name length found 0x3"},
    {Directory, 256 + 66, 1, 3,    "type found 0x3"},
    {Directory, 256 + 67, 1, 1,    "black height, left and right expected 0x2 found 0x1"},
    {Directory, 256 + 68, 4, 3,    "color below red expected 0x1 found 0"},
    {Directory, 256 + 76, 4, 4,    "child expected 0xffffffff found 0x4"},
    {Directory, 256 + 80, 1, 1,    "class id expected 0 found 0x1"},
    {Directory, 256 + 96, 4, 7,    "state bits expected 0 found 0x7"},
    {Directory, 256 + 108, 1, 1,   "modified expected 0 found 0x1"},
    {Directory, 256 + 120, 4, 4095, "\"A\": mini sector 0x5 expected one below 0x2"},
    {Directory, 256 + 120, 4, 4097, "\"A\": sectors expected 0x9 found 0x8"},
    {Directory, 256 + 124, 4, 1,   "size found 0x100001000"},
    {Directory, 384 + 120, 4, 4096, "\"CCC\": sector 0 expected unowned, found owner FAT:"},
    {Directory, 512 + 116, 4, 0,   "\"x\": mini sector 0"},
    {Directory, 640 + 68, 4, 0,    "unused, byte at 0x44 expected 0xff found 0"},
    {Directory, 640 + 0, 1, 9,     "unused, byte at 0 expected 0 found 0x9"},
};
// clang-format on

TEST(CompoundChecker, ComplainsOfEachSpoiledField) {
  for (const Spoiled& spoiled : SpoiledFields) {
    std::string file = GoodFile(spoiled.sector);
    Put(file, spoiled.place * spoiled.sector + spoiled.offset, spoiled.width, spoiled.value);
    const compound::Findings findings = CheckText(file);
    EXPECT_NE(std::string::npos, findings.Text().find(spoiled.complaint))
        << "expected: " << spoiled.complaint << "\nfound:\n"
        << findings.Text();
  }
}

TEST(CompoundChecker, ComplainsOfLengthsAndTheRangeLock) {
  const auto check = [](std::size_t length, std::uint64_t thirteenth, std::uint64_t lockOffset) {
    std::string file = GoodFile(512);
    Put(file, 512 + 4 * 13, 4, thirteenth);
    file.resize(length);
    return CheckText(file, {4096, lockOffset}).Text();
  };
  const std::uint64_t far = 0x7FFFFF00;
  const std::size_t length = 14 * 512;
  // clang-format off
  const struct { std::size_t length; std::uint64_t word, lock; const char* complaint; } rows[] = {
      {length + 512, Free, far,        ""},
      {length + 512, End,  length + 9, ""},
      {length,       Free, length,     ""},
      {length + 512, End,  far,        "sector 0xd without owner expected 0xffffffff"},
      {length + 512, Free, length,     "range lock: mark expected 0xfffffffe found 0xffffffff"},
      {length,       Free, 6 * 512,    "\"A\": sector 0x5 expected unowned, found owner range lock:"},
      {length - 1,   Free, far,        "whole sectors, bytes over expected 0 found 0x1ff"},
      {length - 512, Free, far,        "sector 0xc expected one below 0xc"},
      {512,          Free, far,        "FAT: sector 0 expected one below 0"},
      {511,          Free, far,        "file length expected 0x200 or more, found 0x1ff"},
      {0,            Free, far,        "file length expected 0x200 or more, found 0"},
  };
  // clang-format on
  for (const auto& row : rows) {
    const std::string text = check(row.length, row.word, row.lock);
    EXPECT_NE(std::string::npos, text.find(row.complaint)) << row.complaint << "\nfound:\n" << text;
    EXPECT_EQ(*row.complaint == '\0', text.empty()) << text;
  }
}

// Every single byte set to two other values: some complaint or none, but always an end.
TEST(CompoundChecker, SurvivesAnyByte) {
  const std::string good = GoodFile(512);
  for (std::size_t offset = 0; offset < 6 * 512; ++offset) {
    for (const char value : {'\0', '\xFF'}) {
      std::string file = good;
      file[offset] = value;
      EXPECT_LT(CheckText(file).complaints.size(), 100U);
    }
  }
}

TEST(CompoundChecker, SurvivesEveryLength) {
  const std::string good = GoodFile(512);
  for (std::size_t length = 0; length < good.size(); ++length) {
    EXPECT_FALSE(CheckText(good.substr(0, length)).Valid()) << length;
  }
}

TEST(CompoundChecker, OrdersNames) {
  // Each name comes before the next; the second list holds equals.
  const std::u16string_view ordered[] = {u"b",      u"\x00E9", u"\x03C9", u"\x044F",
                                         u"\x5000", u"aa",     u"AB",     u"z\x00FF"};
  for (std::size_t i = 1; i < std::size(ordered); ++i) {
    EXPECT_LT(compound::CompareNames(ordered[i - 1], ordered[i]), 0) << i;
    EXPECT_GT(compound::CompareNames(ordered[i], ordered[i - 1]), 0) << i;
  }
  EXPECT_EQ(0, compound::CompareNames(u"Scene \x00E9\x03C9\x0450\x0101",
                                      u"sCENE \x00C9\x03A9\x0400\x0100"));
}

}  // namespace
