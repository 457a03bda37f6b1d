// What takes gigabytes with the real parameters: DIFAT, locked sector, the limits of version 3.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "platform/compound_format.h"
#include "platform/compound_tree.h"
#include "platform/storage_storage.h"
#include "tests/folder.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr DWORD Mode = STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;

Bytes Pattern(std::size_t size, unsigned seed) {
  Bytes bytes(size);
  std::uint32_t state = seed * 2654435761U + 1;
  for (auto& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<unsigned char>(state >> 24);
  }
  return bytes;
}

/// A file read back by its tables alone.
struct Reader {
  explicit Reader(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    file.assign(std::istreambuf_iterator<char>(in), {});
    std::memcpy(&header, file.data(), sizeof header);
    sectorSize = 1U << header.sectorShift;
    std::vector<std::uint32_t> fatSectors(header.difat, header.difat + HeaderDifatEntries);
    std::uint32_t difat = header.difatStart;
    for (; difat != MarkEndOfChain; difat = fatSectors.back(), fatSectors.pop_back()) {
      Append(difat, &fatSectors);
      ++difatCount;
    }
    for (const std::uint32_t sector : fatSectors) {
      if (sector != MarkFree) Append(sector, &fat);
    }
  }

  void Append(std::uint32_t sector, std::vector<std::uint32_t>* marks) const {
    const std::size_t before = marks->size();
    marks->resize(before + sectorSize / 4);
    std::memcpy(marks->data() + before, &file.at((sector + 1) * std::size_t{sectorSize}),
                sectorSize);
  }

  Bytes Chain(std::uint32_t sector) const {
    Bytes bytes;
    for (; sector != MarkEndOfChain; sector = fat.at(sector)) {
      const auto begin = file.begin() + (std::ptrdiff_t{sector} + 1) * sectorSize;
      bytes.insert(bytes.end(), begin, begin + sectorSize);
    }
    return bytes;
  }

  Bytes Stream(const std::u16string& name) const {
    const Bytes directory = Chain(header.directoryStart);
    for (std::size_t at = 0; at < directory.size(); at += sizeof(CompoundEntryRecord)) {
      CompoundEntryRecord record;
      std::memcpy(&record, &directory[at], sizeof record);
      if (record.name != name) continue;
      Bytes bytes = Chain(record.start);
      bytes.resize(record.size);
      return bytes;
    }
    return {};
  }

  Bytes file;
  CompoundHeader header;
  std::uint32_t sectorSize;
  std::uint32_t difatCount = 0;
  std::vector<std::uint32_t> fat;
};

struct LayoutCase {
  const char* what;
  CompoundParameters parameters;
  std::size_t size;  // of each of the two streams, written in turns
  bool hasDifat;
  bool hasLock;
};

constexpr LayoutCase Layouts[] = {
    {"DIFAT of version 3", {512, 4096, 0x7FFFFF00}, 9'000'000, true, false},
    {"lock in the data", {4096, 4096, 0x100000 - 0x100}, 3'000'000, false, true},
    {"lock in the tables", {4096, 4096, 200 * 4096 + 3840}, 98 * 4096 + 4000, false, true},
    {"small cutoff", {512, 128, 0x7FFFFF00}, 129, false, false},
};

TEST(StorageLayout, IsReadBackByItsTables) {
  for (const LayoutCase& layout : Layouts) {
    SCOPED_TRACE(layout.what);
    const Folder folder;
    const std::string path = folder.Path("layout.cfb");
    IStorage* root = nullptr;
    ASSERT_EQ(CreateCompoundFile(path.c_str(), L"x", layout.parameters, &root), S_OK);
    const OLECHAR* names[] = {L"A", L"B"};
    const Bytes contents[] = {Pattern(layout.size, 1), Pattern(layout.size, 2)};
    IStream* streams[2];
    for (int i = 0; i < 2; ++i) {
      ASSERT_EQ(root->CreateStream(names[i], Mode, 0, 0, &streams[i]), S_OK);
    }
    for (std::size_t at = 0; at < layout.size;) {
      const std::size_t part = std::min<std::size_t>(layout.size - at, 70'001);
      for (int i = 0; i < 2; ++i) {
        const auto count = static_cast<ULONG>(part);
        ASSERT_EQ(streams[i]->Write(&contents[i][at], count, nullptr), S_OK);
      }
      at += part;
      if (at < 200'000) {
        ASSERT_EQ(root->Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE), S_OK);
      }
    }
    for (IStream* stream : streams) EXPECT_EQ(stream->Release(), 0U);
    EXPECT_EQ(root->Release(), 0U);

    const Reader reader(path);
    EXPECT_EQ(reader.Stream(u"A"), contents[0]);
    EXPECT_EQ(reader.Stream(u"B"), contents[1]);
    EXPECT_EQ(reader.difatCount > 0, layout.hasDifat);
    EXPECT_EQ(reader.difatCount, reader.header.difatSectors);
    EXPECT_EQ(reader.file.size() % reader.sectorSize, 0U);
    const std::uint32_t locked = LockedSector(layout.parameters);
    if (layout.hasLock) {
      EXPECT_EQ(reader.fat.at(locked), MarkEndOfChain);
      EXPECT_EQ(std::count(reader.fat.begin(), reader.fat.end(), locked), 0);
    }
  }
}

TEST(StorageLayout, Version3EndsBelowTheLock) {
  const Folder folder;
  const std::string path = folder.Path("limit.cfb");
  IStorage* root = nullptr;
  IStream* stream = nullptr;
  ASSERT_EQ(CreateCompoundFile(path.c_str(), L"x", {512, 4096, 0x40000 - 0x100}, &root), S_OK);
  ASSERT_EQ(root->CreateStream(L"A", Mode, 0, 0, &stream), S_OK);
  const Bytes content = Pattern(300'000, 3);
  ULONG written = 0;
  EXPECT_EQ(stream->Write(content.data(), 300'000, &written), STG_E_MEDIUMFULL);
  EXPECT_GT(written, 250'000U);
  EXPECT_EQ(stream->Release(), 0U);
  EXPECT_EQ(root->Release(), 0U);
  const Reader reader(path);
  EXPECT_LE(reader.file.size(), 0x40000U - 0x200);
  EXPECT_EQ(reader.Stream(u"A"), Bytes(content.begin(), content.begin() + written));
}

struct Checked {
  std::map<std::uint32_t, TreeNode> nodes;
  unsigned BlackHeight(std::uint32_t at, bool underRed) const {
    if (at == NoStream) return 1;
    const TreeNode& node = nodes.at(at);
    const bool red = node.color == ColorRed;
    EXPECT_FALSE(red && underRed);
    const unsigned left = BlackHeight(node.left, red);
    EXPECT_EQ(left, BlackHeight(node.right, red));
    return left + (red ? 0 : 1);
  }
};

TEST(StorageLayout, TreesOfEverySizeAreRedBlack) {
  for (std::uint32_t count = 1; count < 300; ++count) {
    Checked checked;
    VisitTree(0, count, FullLevels(count), [&](const TreeNode& node) {
      EXPECT_EQ(node.position, checked.nodes.size());
      checked.nodes.emplace(node.position, node);
    });
    ASSERT_EQ(checked.nodes.size(), count);
    checked.BlackHeight(TreeRoot(0, count), true);
  }
}

}  // namespace
