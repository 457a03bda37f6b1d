#include "tests/platform/storage_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "save/kelsave_files.h"
#include "tests/platform/read_storage.h"

namespace model {
namespace {

constexpr DWORD Exclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

struct OpenStream {
  IStream* stream;
  std::shared_ptr<Node> node;
  std::size_t position;
};

struct OpenStorage {
  IStorage* storage;
  std::shared_ptr<Node> node;
};

bool AnyOpen(const Node& node) {
  return node.opened != 0 || std::any_of(node.children.begin(), node.children.end(),
                                         [](const auto& child) { return AnyOpen(*child.second); });
}

std::uint64_t BytesIn(const Node& node) {
  std::uint64_t total = node.bytes.size();
  for (const auto& [name, child] : node.children) total += BytesIn(*child);
  return total;
}

std::shared_ptr<Node> Copy(const Node& node) {
  auto copy = std::make_shared<Node>(node);
  copy->created = 0, copy->opened = 0;
  for (auto& [name, child] : copy->children) child = Copy(*child);
  return copy;
}

// Most pairs are one name in two cases; readers change blanks and dots at the ends.
const std::wstring Names[][2] = {{L"a", L"A"},
                                 {L"bX", L"Bx"},
                                 {L"c .-_c", L"d0"},
                                 {L"\x00E9", L"\x00C9"},
                                 {L"\x00C9\x0101", L"\x00FF"},
                                 {L"\x03C9\x03A3", L"\x03C9\x03C2"},
                                 {L"\x0434\x042F\x0451", L"\x0434\x044F\x0401"},
                                 {L"\x6F22", L"b"}};

/// One of those, or one of 17, 19 ... 31 units in one of two cases.
std::wstring Name(std::size_t number) {
  if (number < 2 * std::size(Names)) return Names[number / 2][number % 2];
  return std::wstring(number | 1U, number % 2 == 0 ? L'n' : L'N');
}
constexpr std::size_t NameCount = 32;

const std::string& Noise() {
  static const std::string noise = [] {
    std::minstd_rand random;
    std::string bytes(4 * Piece, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() >> 16);
    return bytes;
  }();
  return noise;
}

/// A storage, one of the names, and what has it there, if anything.
struct Place {
  const OpenStorage parent;
  const std::wstring name;
  const std::shared_ptr<Node> node;
};

class Run {
 public:
  Run(IStorage* root, const std::string& file, unsigned seed, Faults* theFaults)
      : random(seed), fileName(file), faults(theFaults) {
    rootNode->isStorage = true;
    storages.push_back({root, rootNode});
    rootNode->opened = 1;
  }

  std::shared_ptr<Node> Steps(int steps, const Ending& atEnd) {
    static constexpr struct {
      int weight;
      void (Run::*apply)();
    } operations[] = {{8, &Run::CreateStream},   {6, &Run::OpenElement},   {3, &Run::CreateStorage},
                      {20, &Run::Write},         {10, &Run::Read},         {6, &Run::Seek},
                      {6, &Run::SetSize},        {2, &Run::Clone},         {4, &Run::CopyBytes},
                      {3, &Run::Destroy},        {6, &Run::Rename},        {3, &Run::Move},
                      {2, &Run::SetProperties},  {3, &Run::Enumerate},     {1, &Run::Commit},
                      {10, &Run::ReleaseStream}, {2, &Run::ReleaseStorage}};
    std::vector<int> weights;
    for (const auto& operation : operations) weights.push_back(operation.weight);
    std::discrete_distribution<std::size_t> choose(weights.begin(), weights.end());
    for (step = 0; step < steps && GoesOn(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      (this->*(streams.empty() ? &Run::CreateStream : operations[choose(random)].apply))();
    }
    SetTimes();
    atEnd(*storages[0].storage, *rootNode);
    return Finish();
  }

 private:
  // --- Choices ---

  std::size_t Below(std::size_t limit) { return random() % limit; }
  std::uint32_t Size() { return Sizes[Below(std::size(Sizes))]; }
  OpenStorage& AnyStorage() { return storages[Below(storages.size())]; }
  OpenStream& AnyStream() { return streams[Below(streams.size())]; }
  /// Growth stops somewhere, for the time it takes.
  bool Fits(std::uint64_t size) {
    return BytesIn(*rootNode) + size <= (faults == nullptr ? 16 : 4) * Piece;
  }

  Place AnyPlace() {
    const OpenStorage& parent = AnyStorage();
    const std::wstring name = Name(Below(NameCount));
    const auto found = parent.node->children.find(Utf16(name));
    return {parent, name, found == parent.node->children.end() ? nullptr : found->second};
  }

  std::shared_ptr<Node> NewNode(bool isStorage) { return std::make_shared<Node>(Node{isStorage}); }

  void Hold(IStream* stream, const std::shared_ptr<Node>& node, std::size_t position = 0) {
    ++node->opened;
    streams.push_back({stream, node, position});
  }

  /// Whether a call succeeded. It does what the model says unless the disk fails.
  bool Succeeds(HRESULT expected, HRESULT result) {
    if (faults != nullptr && result != expected) {
      EXPECT_TRUE(result == STG_E_MEDIUMFULL || result == STG_E_WRITEFAULT ||
                  result == STG_E_READFAULT);
      faults->results.push_back(result);
    } else {
      EXPECT_EQ(expected, result);
    }
    return result == expected && SUCCEEDED(result);
  }

  bool GoesOn() const {
    return !testing::Test::HasFailure() &&
           (faults == nullptr || faults->goesOn || faults->results.empty());
  }

  // --- Elements ---

  void CreateStream() {
    const auto& [parent, name, old] = AnyPlace();
    const bool replace = Below(4) == 0;
    if (old && replace && AnyOpen(*old)) return;
    IStream* stream = nullptr;
    const HRESULT result = parent.storage->CreateStream(
        name.c_str(), Exclusive | (replace ? STGM_CREATE : 0), 0, 0, &stream);
    if (!Succeeds(old && !replace ? STG_E_FILEALREADYEXISTS : S_OK, result)) return;
    parent.node->children.erase(Utf16(name));
    Hold(stream, parent.node->children[Utf16(name)] = NewNode(false));
  }

  void CreateStorage() {
    const auto& [parent, name, old] = AnyPlace();
    IStorage* storage = nullptr;
    const HRESULT result = parent.storage->CreateStorage(name.c_str(), Exclusive, 0, 0, &storage);
    if (!Succeeds(old ? STG_E_FILEALREADYEXISTS : S_OK, result)) return;
    const std::shared_ptr<Node> node = parent.node->children[Utf16(name)] = NewNode(true);
    ++node->opened;
    storages.push_back({storage, node});
  }

  void OpenElement() {
    const auto& [parent, name, node] = AnyPlace();
    const bool asStorage = node ? node->isStorage != (Below(8) == 0) : Below(2) == 0;
    IStorage* storage = nullptr;
    IStream* stream = nullptr;
    const HRESULT result =
        asStorage
            ? parent.storage->OpenStorage(name.c_str(), nullptr, Exclusive, nullptr, 0, &storage)
            : parent.storage->OpenStream(name.c_str(), nullptr, Exclusive, 0, &stream);
    const bool missing = !node || node->isStorage != asStorage;
    const HRESULT refused = missing ? STG_E_FILENOTFOUND : STG_E_ACCESSDENIED;
    if (!Succeeds(missing || node->opened != 0 ? refused : S_OK, result)) return;
    if (!asStorage) return Hold(stream, node);
    ++node->opened;
    storages.push_back({storage, node});
  }

  void Destroy() {
    const auto& [parent, name, node] = AnyPlace();
    if (node && AnyOpen(*node)) return;
    if (Succeeds(node ? S_OK : STG_E_FILENOTFOUND, parent.storage->DestroyElement(name.c_str()))) {
      parent.node->children.erase(Utf16(name));
    }
  }

  void Rename() {
    const auto& [parent, name, node] = AnyPlace();
    const auto& [target, other, taken] = AnyPlace();
    if (target.node != parent.node || (node && AnyOpen(*node)) || node == taken) return;
    const HRESULT refused = node ? STG_E_FILEALREADYEXISTS : STG_E_FILENOTFOUND;
    const HRESULT result = parent.storage->RenameElement(name.c_str(), other.c_str());
    if (!Succeeds(node && !taken ? S_OK : refused, result)) return;
    parent.node->children.erase(Utf16(name));
    parent.node->children[Utf16(other)] = node;
  }

  void Move() {
    const auto& [parent, name, node] = AnyPlace();
    const auto& [target, other, taken] = AnyPlace();
    const bool copy = faults == nullptr && Below(2) == 0;  // one that fails leaves a part
    if (!node || AnyOpen(*node) || taken || (copy && !Fits(BytesIn(*node)))) return;
    ASSERT_EQ(S_OK, parent.storage->MoveElementTo(name.c_str(), target.storage, other.c_str(),
                                                  copy ? STGMOVE_COPY : STGMOVE_MOVE));
    const auto moved = Copy(*node);
    if (!copy) parent.node->children.erase(Utf16(name));
    target.node->children[Utf16(other)] = moved;
  }

  void SetProperties() {
    OpenStorage& parent = AnyStorage();
    CLSID id{};
    id.Data1 = static_cast<std::uint32_t>(random());
    const DWORD bits = static_cast<DWORD>(random());
    const DWORD mask = Below(2) == 0 ? 0xFFFFFFFF : 0x00FF00F0;
    ASSERT_EQ(S_OK, parent.storage->SetClass(id));
    ASSERT_EQ(S_OK, parent.storage->SetStateBits(bits, mask));
    parent.node->classId = id;
    parent.node->stateBits = (parent.node->stateBits & ~mask) | (bits & mask);
  }

  void Enumerate() {
    const OpenStorage& parent = AnyStorage();
    const std::vector<kel::Element> found = kel::List(*parent.storage);
    ASSERT_EQ(parent.node->children.size(), found.size());
    auto element = found.begin();
    for (const auto& [name, child] : parent.node->children) {
      ASSERT_EQ(name, Utf16(element->name));
      ASSERT_EQ(child->isStorage, element->isStorage);
      ASSERT_EQ(child->bytes.size(), (element++)->size);
    }
  }

  /// After a commit the file is complete as it stands.
  void Commit() {
    const DWORD flags = STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE;
    if (!Succeeds(S_OK, AnyStorage().storage->Commit(flags))) return;
    ExpectFileHolds(fileName, *rootNode,
                    faults == nullptr ? compound::Parameters() : faults->parameters);
  }

  // --- Bytes ---

  void Write() {
    OpenStream& open = AnyStream();
    const std::string bytes = Noise().substr(Below(Piece), Size());
    if (!Fits(bytes.size())) return;
    ULONG written = 0;
    const ULONG size = static_cast<ULONG>(bytes.size());
    const bool isDone = Succeeds(S_OK, open.stream->Write(bytes.data(), size, &written));
    ASSERT_TRUE(isDone == (size == written) || !GoesOn());
    PutBytes(open, bytes.substr(0, written));
    if (!isDone) WriteAgain(open, bytes.substr(written));
  }

  /// A gap before the bytes reads as zeros.
  void PutBytes(OpenStream& open, const std::string& bytes) {
    std::string& all = open.node->bytes;
    if (!bytes.empty()) {
      all.resize(std::max(all.size(), open.position + bytes.size()));
      all.replace(open.position, bytes.size(), bytes);
    }
    open.position += bytes.size();
  }

  /// After a failed write: what was to be written over may have been, in part.
  void WriteAgain(OpenStream& open, const std::string& bytes) {
    if (!GoesOn() || open.position >= open.node->bytes.size()) return;
    ASSERT_EQ(S_OK, open.stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
    PutBytes(open, bytes);
  }

  std::string Rest(const OpenStream& open, std::size_t size) {
    const std::string& all = open.node->bytes;
    return open.position < all.size() ? all.substr(open.position, size) : std::string();
  }

  void Read() {
    OpenStream& open = AnyStream();
    std::string bytes(Size(), '\0');
    ULONG got = 0;
    const ULONG size = static_cast<ULONG>(bytes.size());
    const bool isDone = Succeeds(S_OK, open.stream->Read(bytes.data(), size, &got));
    const std::string expected = Rest(open, isDone ? size : got);
    bytes.resize(got);
    ASSERT_EQ(expected.size(), bytes.size());
    ASSERT_TRUE(expected == bytes);
    open.position += got;
  }

  void Seek() {
    OpenStream& open = AnyStream();
    const std::int64_t bases[] = {0, static_cast<std::int64_t>(open.position),
                                  static_cast<std::int64_t>(open.node->bytes.size())};
    const std::size_t origin = Below(3);
    LARGE_INTEGER move;
    move.QuadPart = (static_cast<std::int64_t>(Below(3)) - 1) * Size();
    const std::int64_t target = bases[origin] + move.QuadPart;
    ULARGE_INTEGER position;
    const HRESULT result = open.stream->Seek(move, static_cast<DWORD>(origin), &position);
    ASSERT_EQ(target < 0 ? STG_E_INVALIDFUNCTION : S_OK, result);
    if (target < 0) return;
    ASSERT_EQ(static_cast<std::uint64_t>(target), position.QuadPart);
    open.position = static_cast<std::size_t>(target);
  }

  void SetSize() {
    OpenStream& open = AnyStream();
    ULARGE_INTEGER size;
    const std::size_t bytes = Size();
    if (!Fits(bytes)) return;
    size.QuadPart = bytes;
    if (Succeeds(S_OK, open.stream->SetSize(size))) open.node->bytes.resize(bytes);
  }

  void Clone() {
    OpenStream& open = AnyStream();
    IStream* clone = nullptr;
    ASSERT_EQ(S_OK, open.stream->Clone(&clone));
    Hold(clone, open.node, open.position);
  }

  void CopyBytes() {
    OpenStream& from = AnyStream();
    OpenStream& to = AnyStream();
    ULARGE_INTEGER size, bytesRead, bytesWritten;
    const std::size_t most = Size();
    if (from.node == to.node || !Fits(most)) return;
    size.QuadPart = most;
    const std::string bytes = Rest(from, most);
    const bool isDone =
        Succeeds(S_OK, from.stream->CopyTo(to.stream, size, &bytesRead, &bytesWritten));
    const auto read = static_cast<std::size_t>(bytesRead.QuadPart);
    const auto written = static_cast<std::size_t>(bytesWritten.QuadPart);
    ASSERT_TRUE(!isDone || (read == bytes.size() && written == bytes.size()));
    from.position += read;
    PutBytes(to, bytes.substr(0, written));
    if (!isDone) WriteAgain(to, bytes.substr(written));
  }

  // --- Ends ---

  void ReleaseStream() {
    const std::size_t index = Below(streams.size());
    EXPECT_EQ(0U, streams[index].stream->Release());
    --streams[index].node->opened;
    streams.erase(streams.begin() + static_cast<std::ptrdiff_t>(index));
  }

  /// Only a storage in which nothing is open; the root stays to the end.
  void ReleaseStorage() {
    const std::size_t index = Below(storages.size());
    const Node& node = *storages[index].node;
    if (index == 0) return;
    for (const auto& child : node.children) {
      if (AnyOpen(*child.second)) return;
    }
    EXPECT_EQ(0U, storages[index].storage->Release());
    --storages[index].node->opened;
    storages.erase(storages.begin() + static_cast<std::ptrdiff_t>(index));
  }

  void SetTimes() {
    constexpr FILETIME created{5, 0x01D01234}, modified{6, 0x01D14321};
    for (auto& [name, child] : rootNode->children) {
      if (!child->isStorage) continue;
      child->created = 0x01D0123400000005, child->modified = 0x01D1432100000006;
      const std::wstring wide(name.begin(), name.end());  // the runs' names are of the basic plane
      EXPECT_EQ(S_OK,
                storages[0].storage->SetElementTimes(wide.c_str(), &created, nullptr, &modified));
    }
  }

  std::shared_ptr<Node> Finish() {
    while (!streams.empty()) ReleaseStream();
    for (; storages.size() > 1; storages.pop_back()) {
      EXPECT_EQ(0U, storages.back().storage->Release());
    }
    EXPECT_EQ(0U, storages[0].storage->Release());
    return rootNode;
  }

  std::mt19937 random;
  const std::string fileName;
  Faults* const faults;
  int step = 0;
  std::vector<OpenStorage> storages;
  std::vector<OpenStream> streams;
  std::shared_ptr<Node> rootNode = std::make_shared<Node>();
};

using Found = std::map<std::u16string, Node>;

/// The elements of the model by their paths.
void Flatten(const Node& node, const std::u16string& path, Found& all) {
  Node& element = all[path] = node;
  element.children.clear();
  element.opened = 0;
  for (const auto& [name, child] : node.children) {
    std::u16string at = path.empty() ? path : path + u'/';
    Flatten(*child, at += name, all);
  }
}

/// That the elements of the model were found, as they are there.
void ExpectSame(const Node& root, const Found& found) {
  Found expected;
  Flatten(root, u"", expected);
  EXPECT_EQ(expected.size(), found.size());
  for (const auto& [path, node] : found) {
    Node& known = expected[path];
    if (known.created == 0) known.created = node.created, known.modified = node.modified;
    EXPECT_TRUE(known == node) << compound::Utf8(path);
  }
}

std::uint64_t Number(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

}  // namespace

std::u16string Utf16(std::wstring_view text) {
  std::u16string units;
  for (const wchar_t wide : text) {
    const char32_t c = static_cast<char32_t>(wide);
    if (c >= 0x10000) units += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
    units += static_cast<char16_t>(c >= 0x10000 ? 0xDC00 + (c & 0x3FF) : c);
  }
  return units;
}

IStorage* CreateFile(const std::string& fileName, ULONG sectorSize) {
  STGOPTIONS options{};
  options.usVersion = 1;
  options.ulSectorSize = sectorSize;
  void* storage = nullptr;
  const std::wstring wide(fileName.begin(), fileName.end());
  const HRESULT result =
      StgCreateStorageEx(wide.c_str(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE,
                         STGFMT_DOCFILE, 0, &options, nullptr, IID_IStorage, &storage);
  return FAILED(result) ? nullptr : static_cast<IStorage*>(storage);
}

HRESULT Put(IStorage& parent, Node& node, const std::wstring& name, const std::string& bytes) {
  IStream* stream = nullptr;
  ULONG written = 0;
  HRESULT result = parent.CreateStream(name.c_str(), Exclusive, 0, 0, &stream);
  if (FAILED(result)) return result;
  result = stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
  stream->Release();
  node.children[Utf16(name)] = std::make_shared<Node>(Node{false, bytes.substr(0, written)});
  return result;
}

std::shared_ptr<Node> RandomRun(IStorage* root, const std::string& fileName, unsigned seed,
                                int steps, Faults* faults, const Ending& atEnd) {
  return Run(root, fileName, seed, faults).Steps(steps, atEnd);
}

std::shared_ptr<Node> RandomRun(const std::string& fileName, unsigned seed, ULONG sectorSize,
                                int steps) {
  IStorage* root = CreateFile(fileName, sectorSize);
  EXPECT_NE(nullptr, root);
  return root ? RandomRun(root, fileName, seed, steps) : std::make_shared<Node>();
}

void ExpectReads(const std::string& fileName, const Node& root) {
  const std::vector<ReadElement> elements = ReadFile(fileName);
  std::vector<std::u16string> paths;
  Found found;
  for (const auto& [parent, name, stat, bytes, result] : elements) {
    paths.push_back((parent != 0 ? paths[parent] + u"/" : u"") + Utf16(name));
    EXPECT_EQ(S_OK, result);
    EXPECT_EQ(bytes.size(), stat.cbSize.QuadPart);
    found[paths.back()] = {
        stat.type == STGTY_STORAGE, bytes, {}, stat.clsid, stat.grfStateBits, Number(stat.ctime),
        Number(stat.mtime),         0};
  }
  EXPECT_EQ(elements.size(), found.size());
  ExpectSame(root, found);
}

void ExpectFileHolds(const std::string& fileName, const Node& root,
                     const compound::Parameters& parameters) {
  const compound::Findings findings = compound::CheckFile(fileName, parameters);
  EXPECT_EQ("", findings.Text());
  std::ifstream file(fileName, std::ios::binary);
  Found found;
  for (const compound::Entry& entry : findings.entries) {
    const bool isStorage = entry.type != compound::Stream;
    CLSID id;
    std::memcpy(&id, entry.classId.data(), sizeof id);
    found[entry.path] = {isStorage,
                         isStorage ? "" : compound::Contents(file, entry),
                         {},
                         id,
                         entry.stateBits,
                         entry.created,
                         entry.modified,
                         0};
  }
  EXPECT_EQ(findings.entries.size(), found.size());
  ExpectSame(root, found);
}

void Unpack(const Node& root, const std::string& folder) {
  std::filesystem::create_directories(folder);
  for (const auto& [name, child] : root.children) {
    const std::string path = folder + "/" + compound::Utf8(name);
    if (child->isStorage) Unpack(*child, path);
    if (!child->isStorage) std::ofstream(path, std::ios::binary) << child->bytes;
  }
}

}  // namespace model
