/// Files that others wrote unusually, that are damaged, or that are made to harm: what opening them
/// tells, and what the checker says of them.

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <numeric>
#include <sstream>

#include "compound/format.h"
#include "save/kelsave_files.h"
#include "tests/failing_memory.h"
#include "tests/folder.h"
#include "tests/platform/read_storage.h"
#include "tests/platform/storage_model.h"

namespace {

constexpr std::uint32_t End = MarkEndOfChain;
const char* const Whole = " Large5000 Small700 Storage Inner0";

/// A file that the library wrote, of 512-byte sectors: `Large` (0 to 9), the mini stream with
/// `Small` (10, 11), the directory with its entries in this order (12, 13), mini FAT (14), FAT
/// (15).
enum : std::uint32_t { Root, Large, Small, Storage, Inner, Unused, Sectors = 16 };

std::string MakeGood() {
  const Folder folder;
  kel::Storage root(model::CreateFile(folder.Path("good"), 512));
  std::string bytes(5000, '\0');
  std::iota(bytes.begin(), bytes.end(), 'a');
  kel::WriteAll(*kel::CreateStream(*root, L"Large"), bytes);
  kel::WriteAll(*kel::CreateStream(*root, L"Small"), bytes.substr(1, 700));
  kel::CreateStream(*kel::CreateStorage(*root, L"Storage"), L"Inner");
  root.reset();
  return folder.Text("good");
}

/// What of it is to be spoiled.
struct Image {
  CompoundHeader header;
  std::vector<std::uint32_t> fat = std::vector<std::uint32_t>(128);
  std::vector<std::uint32_t> miniFat = std::vector<std::uint32_t>(128);
  std::vector<CompoundEntryRecord> entries = std::vector<CompoundEntryRecord>(8);
  std::size_t size;
  std::map<std::size_t, std::uint32_t> words = {};  // others, by their place in the file

  explicit Image(std::string good) : size(good.size()) {
    Exchange([&](std::size_t at, void* data, std::size_t count) {
      std::memcpy(data, &good[at], count);
    });
    bytes_ = std::move(good);
  }

  std::string Bytes() {
    std::string bytes = bytes_;
    bytes.resize(std::max(size, bytes.size()), 'x');
    Exchange([&](std::size_t at, const void* data, std::size_t count) {
      std::memcpy(&bytes[at], data, count);
    });
    for (const auto& [place, word] : words) std::memcpy(&bytes[place], &word, sizeof word);
    bytes.resize(size);
    return bytes;
  }

  void Rename(std::uint32_t entry, const std::u16string& name) {
    std::copy_n(name.c_str(), name.size() + 1, entries[entry].name);
    entries[entry].nameBytes = static_cast<std::uint16_t>(2 * name.size() + 2);
  }

 private:
  template <class Move>
  void Exchange(const Move& move) {
    move(0, &header, sizeof header);
    move(512 * 13, entries.data(), 1024);
    move(512 * 15, miniFat.data(), 512);
    move(512 * 16, fat.data(), 512);
  }

  std::string bytes_;
};

/// The names of a file's elements in the order of enumeration, each with how many bytes it gave,
/// and "!" when these are not all; for a file that cannot be opened, "corrupt" or "refused".
std::string Told(const std::string& path) {
  HRESULT result = S_OK;
  const MeasuredMemory memory;
  IStorage* root = OpenForReading(path, &result);
  EXPECT_LE(memory.Most(), 100000 + 8 * std::filesystem::file_size(path)) << "bytes of memory";
  if (root == nullptr) return result == STG_E_DOCFILECORRUPT ? "corrupt" : "refused";
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

enum Grade { Good, Unusual, Damaged };

struct Case {
  const char* complaint;  // of the checker
  std::function<void(Image&)> spoil;
  std::string told = Whole;
};

void ExpectOfEach(Grade grade, const std::vector<Case>& cases) {
  const Folder folder;
  const std::string good = MakeGood();
  for (const Case& row : cases) {
    Image image(good);
    row.spoil(image);
    const std::string path = folder.Put("file", image.Bytes());
    const compound::Findings findings = compound::CheckFile(path);
    const std::string text = findings.Text();
    SCOPED_TRACE(std::string(row.complaint) + "\nfound:\n" + text);
    EXPECT_EQ(row.told, Told(path));
    EXPECT_NE(std::string::npos, text.find(row.complaint));
    EXPECT_EQ(grade, findings.IsDamaged() ? Damaged : text.empty() ? Good : Unusual);
  }
}

auto Fat(std::uint32_t at, std::uint32_t value) {
  return [=](Image& i) { i.fat[at] = value; };
}
template <class Type>
auto Header(Type CompoundHeader::*field, std::uint32_t value) {
  return [=](Image& i) {
    std::memcpy(&(i.header.*field), &value, std::min(sizeof(Type), sizeof value));
  };
}
template <class Type>
auto Entry(std::uint32_t number, Type CompoundEntryRecord::*field, std::uint64_t value) {
  return [=](Image& i) {
    const auto given = static_cast<Type>(value);
    std::memcpy(&(i.entries[number].*field), &given, sizeof given);  // it may stand anywhere
  };
}
auto Name(std::uint32_t number, const char16_t* name) {
  return [=](Image& i) { i.Rename(number, name); };
}

using Record = CompoundEntryRecord;

// What others write, and what is spoiled without harm, is read.
TEST(SpoiledFiles, Unusual) {
  ExpectOfEach(Good, {{"", [](Image&) {}}});
  ExpectOfEach(
      Unusual,
      {
          {"file: ends within a sector", [](Image& i) { ++i.size; }},
          {"header: the first half of its class", Header(&CompoundHeader::classId, 9)},
          {"header: the minor version", Header(&CompoundHeader::minorVersion, 0x21)},
          {"", Header(&CompoundHeader::transaction, 9)},
          {"", Header(&CompoundHeader::directorySectors, 9)},
          {"", Header(&CompoundHeader::miniFatSectors, 7)},
          {"DIFAT: names sectors beyond", [](Image& i) { i.header.difat[1] = 6; }},
          {"DIFAT: the end of its chain", Header(&CompoundHeader::difatStart, MarkFree)},
          {"FAT: 1 sectors are taken that the file does not have", Fat(16, End)},
          {"FAT: 112 sectors are taken that the file does not have",
           [](Image& i) { std::fill(i.fat.begin() + 16, i.fat.end(), 1000U); }},
          {"mini stream: ends within a small sector", Entry(Root, &Record::size, 900)},
          {"/Large: holds other entries", Entry(Large, &Record::child, Storage)},
          {"/Large: its size has more than 32 bits",
           Entry(Large, &Record::size, 5000 | 7ULL << 32)},
          {": its name holds a character", Entry(Large, &Record::nameBytes, 64)},
          {"//arge: its name holds", Name(Large, u"/arge"), " /arge5000 Small700 Storage Inner0"},
          {"/Sm: its name is not followed by zeros", Entry(Small, &Record::nameBytes, 6),
           " Sm700 Large5000 Storage Inner0"},
          {"out of order: a search by name may miss something",
           [](Image& i) { std::swap(i.entries[Small].left, i.entries[Small].right); }},
          {"directory: 1 unused entries are not empty", Entry(Unused, &Record::created, 1)},
      });
}

TEST(SpoiledFiles, Damaged) {
  ExpectOfEach(
      Damaged,
      {
          {"FAT: a sector of it is cut off", [](Image& i) { i.size -= 100; }},
          {"/Large: is cut off by the end of the file",
           [](Image& i) { i.fat[8] = 16, i.fat[16] = End, i.size += 100; },
           " Large4708! Small700 Storage Inner0"},
          {"this is no compound file [offset 0x0", Header(&CompoundHeader::signature, 0xE011CFD1),
           "refused"},
          {"DIFAT: does not name all", Header(&CompoundHeader::fatSectors, 111)},
          {"DIFAT: its chain of sectors runs in", Header(&CompoundHeader::difatStart, 500)},
          {"DIFAT: its chain of sectors runs in",
           [](Image& i) {
             i.entries[Large].start = 31000, i.header.difatStart = 9, i.size = 32000 * 512;
             i.words[512 * 10 + 508] = 9;
           },
           " Large512! Small700 Storage Inner0"},
          {"/Large: its chain of sectors runs in a circle", Fat(6, 2),
           " Large3584! Small700 Storage Inner0"},
          {"/Large: leads to a sector that the file does not have", Fat(4, Sectors + 3),
           " Large2560! Small700 Storage Inner0"},
          {"/Large: its size is 5000 bytes, its sectors hold 2560", Fat(4, End),
           " Large2560! Small700 Storage Inner0"},
          {"/Large: its size is 4608 bytes, its sectors hold 5120",
           Entry(Large, &Record::size, 4608), " Large4608 Small700 Storage Inner0"},
          {"header: the sector size is not the version's",
           [](Image& i) { i.header.majorVersion = 4, i.entries[Large].size = 1ULL << 63; },
           " Large5120! Small700 Storage Inner0"},
          {"/Large: has a sector in common with mini stream", Entry(Root, &Record::start, 0)},
          {"/Small: has a small sector in common with /Large", Entry(Large, &Record::size, 4095),
           " Large704! Small700 Storage Inner0"},
          {"/Small: leads to a small sector", Header(&CompoundHeader::miniFatStart, End),
           " Large5000 Small64! Storage Inner0"},
          {"/Small: leads to a small sector", Fat(10, End), " Large5000 Small512! Storage Inner0"},
          {"/Small: leads to a small sector", Entry(Root, &Record::size, 64)},
          {"/Small: its chain of small sectors runs in a circle",
           [](Image& i) { i.miniFat[0] = 0; }, " Large5000 Small64! Storage Inner0"},
          {"directory: its chain of sectors runs in a circle",
           [](Image& i) { i.fat[13] = 12, i.entries[Inner].left = 9; }, "corrupt"},
          {"/Storage: leads to an entry that the directory does not have", Fat(12, End), "corrupt"},
          {"/: leads to an entry that the directory", Entry(Large, &Record::right, 8), "corrupt"},
          {"/: leads to an entry that has its place", Entry(Storage, &Record::right, Small),
           "corrupt"},
          {"/Storage: leads to an entry that has its place", Entry(Inner, &Record::left, Root),
           "corrupt"},
          {"/Storage: leads to an entry that has its place",
           Entry(Storage, &Record::child, Storage), "corrupt"},
          {"/Storage: leads to an unused entry", Entry(Storage, &Record::child, 7), "corrupt"},
          {"no storage holds \"Inner\"", Entry(Storage, &Record::child, NoStream),
           " Large5000 Small700 Storage"},
          {"the length of its name is none", Entry(Inner, &Record::nameBytes, 5), "corrupt"},
          {"/: two of its elements are called Small", Name(Large, u"Small"), "corrupt"},
          {"/: two of its elements are called Small", Name(Large, u"sMALL"),
           " Small700 sMALL5000 Storage Inner0"},
      });
}

// What libgsf and Wine made of the same kinds of elements.
TEST(SpoiledFiles, FilesOfOthers) {
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

// Whatever byte outside the streams is spoiled and wherever the file ends, it is refused, or what
// it tells is read. A stream that the checker does not call damaged, and that has its name and its
// size still, has its bytes.
TEST(SpoiledFiles, EveryByteAndEveryLength) {
  const Folder folder;
  const std::string whole = MakeGood();
  const std::string path = folder.Put("file", whole);
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  const auto put = [&](std::size_t at, int byte) {
    file.seekp(static_cast<std::streamoff>(at)).put(static_cast<char>(byte)).flush();
  };
  std::istringstream good(whole);
  const compound::Findings before = compound::Check(good);
  std::size_t damaged = 0;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    if (at == 512) at = 512 * 13;
    SCOPED_TRACE(at);
    for (const int value : {whole[at] ^ 1, whole[at] ^ 0x80, whole[at] ^ 0xFF, 0, 0xFF}) {
      put(at, value);
      Told(path);
      const compound::Findings findings = compound::CheckFile(path);
      if (findings.IsDamaged()) ++damaged;
      for (const compound::Entry& entry : findings.entries) {
        const compound::Entry* was = before.Find(entry.path);
        if (entry.damaged || was == nullptr || was->size != entry.size) continue;
        EXPECT_EQ(Contents(good, *was), Contents(file, entry)) << value;
      }
      ASSERT_LT(findings.complaints.size(), 110U);
    }
    put(at, whole[at]);
  }
  EXPECT_GT(damaged, 300U);
  for (std::size_t size = whole.size(); size-- > 0;) {
    std::filesystem::resize_file(path, size);
    const bool isRead = Told(path) == Whole;
    EXPECT_EQ(size >= 512 * 16 + 4 * 13, isRead) << size << ": the FAT says how 12 goes on";
    EXPECT_TRUE(compound::CheckFile(path).IsDamaged()) << size;
  }
}

// Whichever allocation fails, that is what is told, and what was opened before goes on.
TEST(SpoiledFiles, EveryAllocationFails) {
  for (int n = 0, hasFailed = 1; hasFailed != 0; ++n) {
    kel::Storage root;
    kel::Stream stream;
    std::vector<kel::Element> elements(9);
    {
      const FailingMemory memory(n, false);
      try {
        root = kel::OpenScene(KEL_STORAGE_FILES "/wine.cfb");
        stream = kel::OpenStream(*root, L"large");
        elements = kel::List(*root);
      } catch (const std::bad_alloc&) {
      } catch (const kel::Error& error) {
        EXPECT_EQ(E_OUTOFMEMORY, error.Code()) << error.what();
      }
      hasFailed = memory.Reached() ? 1 : 0;
    }
    EXPECT_EQ(9U, elements.size());
    EXPECT_TRUE(stream == nullptr || kel::ReadAll(*stream).size() == 5000) << n;
  }
}

// One beside another in a tree that is a list, and one within another: 100,000 of them.
TEST(SpoiledFiles, DepthCostsNoCalls) {
  constexpr std::uint32_t count = 100000;
  const Folder folder;
  kel::Storage root(model::CreateFile(folder.Path("file"), 4096));
  for (std::uint32_t i = 0; i < count; ++i) kel::CreateStorage(*root, std::to_wstring(i));
  root.reset();
  std::string bytes = folder.Text("file");
  CompoundHeader header;
  std::memcpy(&header, bytes.data(), sizeof header);
  auto* entries = reinterpret_cast<Record*>(&bytes[4096 * (header.directoryStart + 1)]);
  for (auto link : {&Record::left, &Record::child}) {
    for (std::uint32_t i = 1; i <= count; ++i) {
      entries[i].left = entries[i].right = entries[i].child = NoStream;
      if (i > 1) entries[i].*link = i - 1;
    }
    entries[0].child = count;
    EXPECT_EQ(count + 1, ReadFile(folder.Put("file", bytes)).size());
  }
}

}  // namespace
