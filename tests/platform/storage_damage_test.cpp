/// Files that others wrote unusually, files that are damaged and files that are made to harm.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <new>

#include "compound/format.h"
#include "tests/folder.h"
#include "tests/platform/read_storage.h"
#include "tests/platform/storage_model.h"

namespace {

std::size_t inUse = 0, most = 0;  // bytes of memory
int untilFailure = -1;            // allocations; below zero none fails

void* Allocate(std::size_t size) {
  void* memory = untilFailure-- == 0 ? nullptr : std::malloc(size);
  if (memory != nullptr) most = std::max(most, inUse += malloc_usable_size(memory));
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  void* memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  inUse -= malloc_usable_size(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

enum : std::uint32_t { Root, Small, Large, Storage, Inner, EntryCount };
constexpr std::uint32_t Sectors = 16, End = MarkEndOfChain;

/// A file of 512-byte sectors that tests spoil: FAT, directory (1, 2), mini FAT, mini stream (4, 5)
/// and the stream `Large` (6 to 15).
struct Image {
  CompoundHeader header = {};
  std::vector<std::uint32_t> fat = std::vector<std::uint32_t>(128, MarkFree);
  std::vector<std::uint32_t> miniFat = std::vector<std::uint32_t>(128, MarkFree);
  std::vector<CompoundEntryRecord> entries = std::vector<CompoundEntryRecord>(8);
  std::size_t size = 512 * (Sectors + 1);
  std::map<std::size_t, std::uint32_t> words;  // of sectors of `Large`, by their place in the file

  Image() {
    std::memcpy(header.signature, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    header.majorVersion = 3, header.byteOrder = 0xFFFE, header.sectorShift = 9;
    header.miniSectorShift = 6, header.fatSectors = 1, header.directoryStart = 1;
    header.miniCutoff = 4096, header.miniFatStart = 3, header.miniFatSectors = 1;
    header.difatStart = End;
    std::fill(std::begin(header.difat) + 1, std::end(header.difat), MarkFree);
    Chain(fat, {0}, MarkFat), Chain(fat, {1, 2}), Chain(fat, {3}), Chain(fat, {4, 5});
    Chain(fat, {6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    Chain(miniFat, {0, 9});  // the second in the second sector
    Entry(Root, u"Root Entry", EntryRoot, 4, 1024);
    Entry(Small, u"Small", EntryStream, 0, 100);
    Entry(Large, u"Large", EntryStream, 6, 5000);
    Entry(Storage, u"Storage", EntryStorage, 0, 0);
    Entry(Inner, u"Inner", EntryStream, End, 0);
    entries[Root].child = Small;
    entries[Small].left = Large, entries[Small].right = Storage;
    entries[Storage].child = Inner;
  }

  static void Chain(std::vector<std::uint32_t>& table, const std::vector<std::uint32_t>& sectors,
                    std::uint32_t last = End) {
    for (std::size_t i = 0; i < sectors.size(); ++i) {
      table[sectors[i]] = i + 1 < sectors.size() ? sectors[i + 1] : last;
    }
  }

  void Entry(std::uint32_t number, const std::u16string& name, CompoundEntryType type,
             std::uint32_t start, std::uint64_t bytes) {
    CompoundEntryRecord& entry = entries[number];
    std::fill(std::begin(entry.name), std::end(entry.name), u'\0');
    std::copy(name.begin(), name.end(), entry.name);
    entry.nameBytes = static_cast<std::uint16_t>(2 * name.size() + 2);
    entry.type = type, entry.color = ColorBlack, entry.start = start, entry.size = bytes;
    entry.left = entry.right = entry.child = NoStream;
  }

  std::string Bytes() const {
    std::string bytes(std::max<std::size_t>(size, 512 * (Sectors + 1)), 'x');
    const auto put = [&](std::size_t sector, const void* data) {
      std::memcpy(&bytes[512 * sector], data, 512);
    };
    put(0, &header), put(1, fat.data()), put(2, &entries[0]), put(3, &entries[4]);
    put(4, miniFat.data());
    for (const auto& [place, word] : words) std::memcpy(&bytes[place], &word, sizeof word);
    bytes.resize(size);
    return bytes;
  }
};

/// The names of a file's elements in the order of enumeration, each with how many bytes it gave,
/// and
/// "!" when these are not all; for a file that cannot be opened, "corrupt" or "refused".
std::string Told(const std::string& path) {
  most = inUse;
  const std::size_t before = inUse;
  HRESULT result = S_OK;
  IStorage* root = OpenForReading(path, &result);
  EXPECT_LE(most - before, 100000 + 8 * std::filesystem::file_size(path)) << "bytes of memory";
  if (root == nullptr) {
    return result == STG_E_DOCFILECORRUPT ? "corrupt" : "refused";
  }
  std::string outcome;
  const std::vector<ReadElement> all = ReadAll(root);
  for (const ReadElement& element : all) {
    if (&element != &all[0]) outcome += ' ';
    for (const wchar_t c : element.name) outcome += static_cast<char>(c);
    if (element.stat.type == STGTY_STREAM) outcome += std::to_string(element.bytes.size());
    EXPECT_TRUE(element.result == S_OK || element.result == STG_E_DOCFILECORRUPT);
    if (element.result != S_OK) outcome += '!';
  }
  root->Release();
  return outcome;
}

struct Case {
  const char* what;
  std::function<void(Image&)> spoil;
  std::string outcome = " Large5000 Small100 Storage Inner0";
};

void ExpectTold(const std::vector<Case>& cases) {
  const Folder folder;
  for (const Case& row : cases) {
    Image image;
    row.spoil(image);
    EXPECT_EQ(row.outcome, Told(folder.Put("file", image.Bytes()))) << row.what;
  }
}

// What libgsf and Wine made of the same kinds of elements.
TEST(StorageDamage, FilesOfOthers) {
  const std::string files = KEL_STORAGE_FILES;
  EXPECT_EQ(" Empty0 Large5000 Small5 Storage INNER1 inner5", Told(files + "/gsf.cfb"));
  EXPECT_EQ(" b63 c10 d10 e10 \351t\35164 last4096 Empty0 large5000 Storage a1 inner65 deeper x200",
            Told(files + "/wine.cfb"));
  for (const ReadElement& element : ReadFile(files + "/wine.cfb")) {
    for (std::size_t i = 0; i < element.bytes.size(); ++i) {
      ASSERT_EQ('a' + static_cast<int>(i % 26), element.bytes[i]) << i;
    }
  }
}

TEST(StorageDamage, WhatOthersWriteIsRead) {
  const auto entry = [](std::uint32_t number, auto field, auto value) {
    return [=](Image& i) { i.entries[number].*field = value; };
  };
  using Record = CompoundEntryRecord;
  ExpectTold({
      {"as it should be", [](Image&) {}},
      {"the last sector cut", [](Image& i) { i.size -= 100; }},
      {"header: class, minor version, transaction, counts",
       [](Image& i) {
         i.header.classId[0] = 9, i.header.transaction = i.header.directorySectors = 9;
         i.header.minorVersion = 0x21, i.header.miniFatSectors = i.header.fatSectors = 7;
       }},
      {"DIFAT: ends as free", [](Image& i) { i.header.difatStart = MarkFree; }},
      {"FAT: rubbish of free sectors and beyond",
       [](Image& i) { std::fill(i.fat.begin() + 16, i.fat.end(), 1000U); }},
      {"FAT: chain longer than its stream", [](Image& i) { i.entries[Large].size = 4608; },
       " Large4608 Small100 Storage Inner0"},
      {"root: size of the mini stream too small", [](Image& i) { i.entries[Root].size = 64; }},
      {"stream with children", entry(Large, &Record::child, std::uint32_t{Storage})},
      {"size with an upper half", [](Image& i) { i.entries[Large].size |= 7ULL << 32; }},
      {"name counted with its filling", entry(Large, &Record::nameBytes, std::uint16_t{64})},
      {"out of order", [](Image& i) { std::swap(i.entries[Small].left, i.entries[Small].right); }},
      {"names that cannot be made", [](Image& i) { i.entries[Large].name[0] = u'/'; },
       " /arge5000 Small100 Storage Inner0"},
      {"names that differ in case",
       [](Image& i) { i.Entry(Large, u"sMALL", EntryStream, 6, 5000); },
       " Small100 sMALL5000 Storage Inner0"},
  });
}

TEST(StorageDamage, WhatMakesNoSenseIsCorrupt) {
  const auto table = [](auto which, std::uint32_t at, std::uint32_t value) {
    return [=](Image& i) { (i.*which)[at] = value; };
  };
  const auto fat = [&](std::uint32_t at, std::uint32_t value) {
    return table(&Image::fat, at, value);
  };
  const auto mini = [&](std::uint32_t at, std::uint32_t value) {
    return table(&Image::miniFat, at, value);
  };
  const auto link = [](std::uint32_t number, auto field, std::uint32_t value) {
    return [=](Image& i) { i.entries[number].*field = value; };
  };
  using Record = CompoundEntryRecord;
  ExpectTold({
      {"chain: loop", fat(12, 8), " Large3584! Small100 Storage Inner0"},
      {"chain: beyond the end", fat(10, Sectors + 3), " Large2560! Small100 Storage Inner0"},
      {"chain: too short", fat(10, End), " Large2560! Small100 Storage Inner0"},
      {"mini chain: loop", mini(0, 0), " Large5000 Small64! Storage Inner0"},
      {"mini stream: shorter than promised", fat(4, End), " Large5000 Small64! Storage Inner0"},
      {"size beyond all files",
       [](Image& i) { i.header.majorVersion = 4, i.entries[Large].size = 1ULL << 63; },
       " Large5120! Small100 Storage Inner0"},
      {"directory: loop of its sectors", [](Image& i) { i.fat[2] = 1, i.entries[Inner].left = 9; },
       "corrupt"},
      {"directory: too short", fat(1, End), "corrupt"},
      {"directory: loop to the right", link(Storage, &Record::right, Small), "corrupt"},
      {"directory: loop to the root", link(Inner, &Record::left, Root), "corrupt"},
      {"directory: within itself", link(Storage, &Record::child, Storage), "corrupt"},
      {"directory: beyond the end", link(Large, &Record::right, 8), "corrupt"},
      {"directory: odd name", [](Image& i) { i.entries[Inner].nameBytes = 5; }, "corrupt"},
      {"directory: one name twice",
       [](Image& i) { i.Entry(Large, u"Small", EntryStream, 6, 5000); }, "corrupt"},
      {"DIFAT: loop",
       [](Image& i) {
         i.entries[Large].start = 31000, i.header.difatStart = 14, i.size = 32000 * 512;
         i.words[512 * 15 + 508] = 14;
       },
       " Large512! Small100 Storage Inner0"},
  });
}

// Whatever byte is spoiled and wherever the file ends, it is refused, or what it tells is read.
TEST(StorageDamage, EveryByteAndEveryLength) {
  const Folder folder;
  const std::string whole = Image().Bytes();
  const std::string path = folder.Put("file", whole);
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  const auto put = [&](std::size_t at, char byte) {
    file.seekp(static_cast<std::streamoff>(at)).put(byte).flush();
  };
  for (std::size_t at = 0; at < 2048; ++at) {
    SCOPED_TRACE(at);
    for (const int flip : {0x01, 0x80, 0xFF}) {
      put(at, static_cast<char>(whole[at] ^ flip));
      Told(path);
    }
    put(at, whole[at]);
  }
  for (std::size_t size = whole.size(); size-- > 0;) {
    std::filesystem::resize_file(path, size);
    EXPECT_EQ(size >= whole.size() - 120, Told(path) == " Large5000 Small100 Storage Inner0")
        << size;
  }
}

// Whichever allocation fails, that is what is told, and what was opened before goes on.
TEST(StorageDamage, EveryAllocationFails) {
  const std::string file = KEL_STORAGE_FILES "/wine.cfb";
  const std::wstring path(file.begin(), file.end());
  const auto expect = [](HRESULT result) {
    EXPECT_TRUE(result == S_OK || result == E_OUTOFMEMORY);
  };
  for (int n = 0;; ++n) {
    IStorage* root = nullptr;
    IStream* stream = nullptr;
    IEnumSTATSTG* list = nullptr;
    char bytes[5000];
    untilFailure = n;
    expect(StgOpenStorage(path.c_str(), nullptr, STGM_SHARE_DENY_WRITE, nullptr, 0, &root));
    if (root != nullptr) {
      expect(root->EnumElements(0, nullptr, 0, &list));
      expect(root->OpenStream(L"large", nullptr, STGM_SHARE_EXCLUSIVE, 0, &stream));
      if (stream != nullptr) expect(stream->Read(bytes, sizeof bytes, nullptr));
    }
    const bool hasFailed = untilFailure < 0;
    untilFailure = -1;
    if (stream != nullptr) {
      EXPECT_EQ(S_OK, stream->Read(bytes, sizeof bytes, nullptr));
      stream->Release();
    }
    if (list != nullptr) list->Release();
    if (root != nullptr) root->Release();
    if (!hasFailed) break;
  }
}

// One beside another in a tree that is a list, and one within another: 100,000 of them.
TEST(StorageDamage, DepthCostsNoCalls) {
  constexpr std::uint32_t count = 100000;
  const Folder folder;
  IStorage* root = model::CreateFile(folder.Path("file"), 4096);
  for (std::uint32_t i = 0; i < count; ++i) {
    IStorage* made = nullptr;
    ASSERT_EQ(S_OK, root->CreateStorage(std::to_wstring(i).c_str(),
                                        STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, 0, &made));
    made->Release();
  }
  root->Release();
  std::string bytes = folder.Text("file");
  CompoundHeader header;
  std::memcpy(&header, bytes.data(), sizeof header);
  auto* entries =
      reinterpret_cast<CompoundEntryRecord*>(&bytes[4096 * (header.directoryStart + 1)]);
  for (auto link : {&CompoundEntryRecord::left, &CompoundEntryRecord::child}) {
    for (std::uint32_t i = 1; i <= count; ++i) {
      entries[i].left = entries[i].right = entries[i].child = NoStream;
      if (i > 1) entries[i].*link = i - 1;
    }
    entries[0].child = count;
    EXPECT_EQ(count + 1, ReadFile(folder.Put("file", bytes)).size());
  }
}

}  // namespace
