/// What each call answers: names, modes, states, lifetimes and targets, in tables.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <numeric>
#include <set>
#include <utility>

#include "tests/folder.h"
#include "tests/platform/storage_model.h"

namespace {

constexpr DWORD Exclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr GUID OtherId = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

/// The only reference to an object, which is gone when this is.
template <class Interface>
class Held {
 public:
  Held() = default;
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { Release(); }

  void Release() {
    if (object != nullptr) {
      EXPECT_EQ(0U, std::exchange(object, nullptr)->Release());
    }
  }
  Interface** Place() {
    Release();
    return &object;
  }
  Interface* operator->() const { return object; }
  // NOLINTNEXTLINE(google-explicit-constructor): stands for the pointer that it holds
  operator Interface*() const { return object; }

 private:
  Interface* object = nullptr;
};

class StorageInterface : public testing::Test {
 protected:
  void SetUp() override {
    *root.Place() = model::CreateFile(file, 4096);
    ASSERT_NE(nullptr, root);
  }
  void TearDown() override {
    root.Release();
    EXPECT_EQ("", compound::CheckFile(file).Text());
  }

  static void Make(IStorage* parent, const wchar_t* name, Held<IStream>& stream) {
    ASSERT_EQ(S_OK, parent->CreateStream(name, Exclusive, 0, 0, stream.Place()));
  }
  static void Make(IStorage* parent, const wchar_t* name, Held<IStorage>& storage) {
    ASSERT_EQ(S_OK, parent->CreateStorage(name, Exclusive, 0, 0, storage.Place()));
  }
  static void MakeStream(IStorage* parent, const wchar_t* name) {
    Held<IStream> stream;
    Make(parent, name, stream);
  }

  const Folder folder;
  const std::string file = folder.Path("file.cfb");
  Held<IStorage> root;
};

TEST_F(StorageInterface, Names) {
  const std::wstring thirtyOne(31, L'n');
  const std::wstring pairs(15, L'\x1F600');  // two units each
  const struct {
    std::wstring name;
    HRESULT result;
  } rows[] = {
      {L"n", S_OK},
      {thirtyOne, S_OK},
      {thirtyOne + L"n", STG_E_INVALIDNAME},
      {pairs + L"n", S_OK},
      {pairs + L"\x1F600", STG_E_INVALIDNAME},
      {L"", STG_E_INVALIDNAME},
      {L"a/b", STG_E_INVALIDNAME},
      {L"a\\b", STG_E_INVALIDNAME},
      {L"a:b", STG_E_INVALIDNAME},
      {L"a!b", STG_E_INVALIDNAME},
      {L"\x0005Summary", S_OK},
      {L"a\"*?<>|b", S_OK},
      {L" .", S_OK},
      {L"Root Entry", S_OK},
  };
  MakeStream(root, L"old");
  for (const auto& row : rows) {
    SCOPED_TRACE(compound::Utf8(model::Utf16(row.name)));
    const bool good = row.result == S_OK;
    const wchar_t* name = row.name.c_str();
    Held<IStream> stream;
    EXPECT_EQ(row.result, root->CreateStream(name, Exclusive, 0, 0, stream.Place()));
    stream.Release();
    EXPECT_EQ(good, SUCCEEDED(root->DestroyElement(name)));
    Held<IStorage> storage;
    EXPECT_EQ(row.result, root->CreateStorage(name, Exclusive, 0, 0, storage.Place()));
    storage.Release();
    EXPECT_EQ(good, SUCCEEDED(root->DestroyElement(name)));
    EXPECT_EQ(row.result, root->RenameElement(L"old", name));
    EXPECT_EQ(good, SUCCEEDED(root->RenameElement(name, L"old")));
  }
}

TEST_F(StorageInterface, NamesDifferByMoreThanCase) {
  const wchar_t* const taken[][2] = {{L"Scene", L"sCENE"},
                                     {L"\x00E9t\x00E9", L"\x00C9T\x00C9"},
                                     {L"\x03C9\x03C3", L"\x03A9\x03A3"},
                                     {L"\x0436\x0451", L"\x0416\x0401"},
                                     {L"\x023A\x1FC3", L"\x2C65\x1FCC"}};
  MakeStream(root, L"s\x0131n\x0131r");  // another name than this one
  MakeStream(root, L"sinir");
  Held<IStream> stream;
  for (const auto& [first, second] : taken) {
    MakeStream(root, first);
    EXPECT_EQ(STG_E_FILEALREADYEXISTS, root->CreateStream(second, Exclusive, 0, 0, stream.Place()));
    EXPECT_EQ(S_OK, root->OpenStream(second, nullptr, Exclusive, 0, stream.Place()));
  }
}

TEST_F(StorageInterface, ReferencesAreExact) {
  Held<IStream> stream;
  Held<IStorage> storage;
  Held<IEnumSTATSTG> enumerator;
  Make(root, L"stream", stream);
  Make(root, L"storage", storage);
  ASSERT_EQ(S_OK, root->EnumElements(0, nullptr, 0, enumerator.Place()));
  const struct {
    IUnknown* object;
    IID own;
  } rows[] = {{root, IID_IStorage},
              {storage, IID_IStorage},
              {stream, IID_IStream},
              {stream, IID_ISequentialStream},
              {enumerator, IID_IEnumSTATSTG}};
  for (const auto& [object, own] : rows) {
    for (const IID& id : {own, IID_IUnknown}) {
      void* same = nullptr;
      EXPECT_EQ(S_OK, object->QueryInterface(id, &same));
      EXPECT_EQ(object, static_cast<IUnknown*>(same));
      EXPECT_EQ(3U, object->AddRef());
      EXPECT_EQ(2U, object->Release());
      EXPECT_EQ(1U, object->Release());
    }
    void* other = object;
    EXPECT_EQ(E_NOINTERFACE, object->QueryInterface(OtherId, &other));
    EXPECT_EQ(nullptr, other);
  }
}

// Every method of what is left over when the root is gone; the left-overs still count references.
TEST_F(StorageInterface, RevertedWhenTheRootIsGone) {
  Held<IStream> stream, clone;
  Held<IStorage> storage;
  Held<IEnumSTATSTG> list;
  Make(root, L"stream", stream);
  ASSERT_EQ(S_OK, stream->Clone(clone.Place()));
  Make(root, L"storage", storage);
  ASSERT_EQ(S_OK, root->EnumElements(0, nullptr, 0, list.Place()));
  root.Release();

  char bytes[8] = {};
  ULONG count = 0;
  STATSTG stat{};
  ULARGE_INTEGER size{};
  LARGE_INTEGER move{};
  IStream* newStream = nullptr;
  IStorage* newStorage = nullptr;
  IEnumSTATSTG* newList = nullptr;
  const FILETIME time{1, 2};
  const struct {
    const char* call;
    std::function<HRESULT()> apply;
  } rows[] = {
      {"Read", [&] { return stream->Read(bytes, 4, &count); }},
      {"Write", [&] { return stream->Write(bytes, 4, &count); }},
      {"Write of the clone", [&] { return clone->Write(bytes, 4, &count); }},
      {"Seek", [&] { return stream->Seek(move, STREAM_SEEK_SET, nullptr); }},
      {"SetSize", [&] { return stream->SetSize(size); }},
      {"CopyTo", [&] { return stream->CopyTo(clone, size, nullptr, nullptr); }},
      {"Commit", [&] { return stream->Commit(STGC_DEFAULT); }},
      {"Revert", [&] { return stream->Revert(); }},
      {"LockRegion", [&] { return stream->LockRegion(size, size, 1); }},
      {"UnlockRegion", [&] { return stream->UnlockRegion(size, size, 1); }},
      {"Stat", [&] { return stream->Stat(&stat, STATFLAG_NONAME); }},
      {"Clone", [&] { return stream->Clone(&newStream); }},
      {"CreateStream", [&] { return storage->CreateStream(L"n", Exclusive, 0, 0, &newStream); }},
      {"OpenStream", [&] { return storage->OpenStream(L"n", nullptr, Exclusive, 0, &newStream); }},
      {"CreateStorage", [&] { return storage->CreateStorage(L"n", Exclusive, 0, 0, &newStorage); }},
      {"OpenStorage",
       [&] { return storage->OpenStorage(L"n", nullptr, Exclusive, nullptr, 0, &newStorage); }},
      {"CopyTo", [&] { return storage->CopyTo(0, nullptr, nullptr, storage); }},
      {"MoveElementTo", [&] { return storage->MoveElementTo(L"n", storage, L"m", STGMOVE_MOVE); }},
      {"Commit", [&] { return storage->Commit(STGC_DEFAULT); }},
      {"Revert", [&] { return storage->Revert(); }},
      {"EnumElements", [&] { return storage->EnumElements(0, nullptr, 0, &newList); }},
      {"DestroyElement", [&] { return storage->DestroyElement(L"n"); }},
      {"RenameElement", [&] { return storage->RenameElement(L"n", L"m"); }},
      {"SetElementTimes", [&] { return storage->SetElementTimes(L"n", &time, &time, &time); }},
      {"SetClass", [&] { return storage->SetClass(OtherId); }},
      {"SetStateBits", [&] { return storage->SetStateBits(1, 1); }},
      {"Stat", [&] { return storage->Stat(&stat, STATFLAG_NONAME); }},
      {"Next", [&] { return list->Next(1, &stat, &count); }},
      {"Skip", [&] { return list->Skip(1); }},
      {"Reset", [&] { return list->Reset(); }},
      {"Clone", [&] { return list->Clone(&newList); }},
  };
  for (const auto& row : rows) EXPECT_EQ(STG_E_REVERTED, row.apply()) << row.call;
  for (IUnknown* object : std::initializer_list<IUnknown*>{stream, clone, storage, list}) {
    EXPECT_EQ(2U, object->AddRef());
    EXPECT_EQ(1U, object->Release());
  }
}

TEST_F(StorageInterface, EnumeratorsSkipResetAndClone) {
  for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) MakeStream(root, name);
  Held<IEnumSTATSTG> list, clone;
  ASSERT_EQ(S_OK, root->EnumElements(0, nullptr, 0, list.Place()));
  STATSTG stat[5];
  ULONG fetched = 0;
  const auto next = [&](IEnumSTATSTG* from, ULONG count) {
    std::wstring names;
    const HRESULT result = from->Next(count, stat, &fetched);
    EXPECT_EQ(fetched == count ? S_OK : S_FALSE, result);
    for (ULONG i = 0; i < fetched; ++i) {
      names += stat[i].pwcsName;
      CoTaskMemFree(stat[i].pwcsName);
    }
    return names;
  };
  EXPECT_EQ(L"a", next(list, 1));
  EXPECT_EQ(S_OK, list->Skip(1));
  ASSERT_EQ(S_OK, list->Clone(clone.Place()));
  EXPECT_EQ(L"cd", next(list, 5));
  EXPECT_EQ(L"", next(list, 1));
  EXPECT_EQ(L"c", next(clone, 1));
  EXPECT_EQ(S_FALSE, clone->Skip(2));
  EXPECT_EQ(S_OK, list->Reset());
  EXPECT_EQ(L"abcd", next(list, 4));
}

// Read-only openings, second openings, and what becomes of an open element that is taken away.
TEST_F(StorageInterface, OpenElements) {
  constexpr DWORD reading = STGM_READ | STGM_SHARE_EXCLUSIVE;
  Held<IStream> reader, second, inner;
  Held<IStorage> storage;
  MakeStream(root, L"stream");
  Make(root, L"storage", storage);
  MakeStream(storage, L"inner");
  ASSERT_EQ(S_OK, root->OpenStream(L"stream", nullptr, reading, 0, reader.Place()));
  ASSERT_EQ(S_OK, root->OpenStorage(L"storage", nullptr, reading, nullptr, 0, storage.Place()));
  EXPECT_EQ(STG_E_ACCESSDENIED,
            storage->OpenStream(L"inner", nullptr, Exclusive, 0, inner.Place()));
  ASSERT_EQ(S_OK, storage->OpenStream(L"inner", nullptr, reading, 0, inner.Place()));

  const ULARGE_INTEGER size{};
  const LARGE_INTEGER farthest{{0xFFFFFFFF, 0x7FFFFFFF}};
  const auto seek = [&] { return reader->Seek(farthest, STREAM_SEEK_CUR, nullptr); };
  EXPECT_EQ(STG_E_ACCESSDENIED, reader->Write("x", 1, nullptr));
  EXPECT_EQ(STG_E_ACCESSDENIED, reader->SetSize(size));
  EXPECT_EQ(STG_E_INVALIDFUNCTION, reader->LockRegion(size, size, 1));
  EXPECT_EQ(STG_E_INVALIDFUNCTION, reader->UnlockRegion(size, size, 1));
  EXPECT_EQ(S_OK, seek());
  EXPECT_EQ(S_OK, seek());
  EXPECT_EQ(STG_E_INVALIDFUNCTION, seek()) << "beyond 64 bits";
  EXPECT_EQ(S_OK, reader->Revert());
  EXPECT_EQ(S_OK, root->Revert());
  EXPECT_EQ(STG_E_ACCESSDENIED, root->OpenStream(L"stream", nullptr, Exclusive, 0, second.Place()));
  EXPECT_EQ(STG_E_ACCESSDENIED, root->RenameElement(L"stream", L"other"));

  STATSTG stat;
  EXPECT_EQ(S_OK, root->DestroyElement(L"storage"));
  EXPECT_EQ(S_OK, root->CreateStream(L"stream", Exclusive | STGM_CREATE, 0, 0, second.Place()));
  EXPECT_EQ(STG_E_REVERTED, reader->Stat(&stat, STATFLAG_NONAME));
  EXPECT_EQ(STG_E_REVERTED, storage->Stat(&stat, STATFLAG_NONAME));
  EXPECT_EQ(STG_E_REVERTED, inner->Stat(&stat, STATFLAG_NONAME));
}

// A stream whose copy would replace the storage it lies in stays where it is.
TEST_F(StorageInterface, CopyOntoItsOwnStorage) {
  Held<IStorage> storage;
  Held<IStream> stream;
  Make(root, L"same", storage);
  MakeStream(storage, L"same");
  EXPECT_EQ(STG_E_ACCESSDENIED, storage->MoveElementTo(L"same", root, L"SAME", STGMOVE_MOVE));
  EXPECT_EQ(STG_E_ACCESSDENIED, storage->MoveElementTo(L"same", root, L"same", STGMOVE_COPY));
  EXPECT_EQ(STG_E_ACCESSDENIED, storage->CopyTo(0, nullptr, nullptr, root));
  EXPECT_EQ(S_OK, storage->OpenStream(L"same", nullptr, Exclusive, 0, stream.Place()));
}

// Whole kinds of elements are left out at every depth, named ones at the first only.
TEST_F(StorageInterface, CopiesWithoutWhatIsExcluded) {
  Held<IStorage> from, inner;
  Make(root, L"from", from);
  Make(from, L"inner", inner);
  MakeStream(from, L"stream");
  MakeStream(inner, L"stream");
  inner.Release();
  OLECHAR name[] = L"STREAM";
  LPOLESTR names[] = {name, nullptr};
  const struct {
    const IID* ids;
    SNB names;
    DWORD count;
    const char16_t* copied;
  } rows[] = {
      {nullptr, nullptr, 0, u"inner inner/stream stream "},
      {nullptr, nullptr, 1, u"inner inner/stream stream "},
      {&IID_IStream, nullptr, 1, u"inner "},
      {&IID_IStorage, nullptr, 1, u"stream "},
      {nullptr, names, 0, u"inner inner/stream "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    Held<IStorage> to;
    Make(root, L"to", to);
    EXPECT_EQ(S_OK, from->CopyTo(row.count, row.ids, row.names, to));
    to.Release();
    ASSERT_EQ(S_OK, root->Commit(STGC_DEFAULT));
    std::set<std::u16string> paths;
    for (const compound::Entry& entry : compound::CheckFile(file).entries) {
      if (entry.path.starts_with(u"to/")) paths.insert(entry.path.substr(3) + u" ");
    }
    EXPECT_EQ(row.copied, std::accumulate(paths.begin(), paths.end(), std::u16string()));
    EXPECT_EQ(S_OK, root->DestroyElement(L"to"));
  }
}

// What is not understood is refused, leaves no element and clears the place for the pointer.
TEST_F(StorageInterface, ArgumentsOfElements) {
  const struct {
    DWORD mode, reserved1, reserved2;
  } rows[] = {
      {STGM_READWRITE, 0, 0},
      {STGM_READWRITE | STGM_SHARE_DENY_NONE, 0, 0},
      {STGM_READWRITE | STGM_SHARE_DENY_WRITE, 0, 0},
      {Exclusive | STGM_TRANSACTED, 0, 0},
      {Exclusive | STGM_PRIORITY, 0, 0},
      {Exclusive | STGM_DELETEONRELEASE, 0, 0},
      {Exclusive | 3, 0, 0},
      {Exclusive, 1, 0},
      {Exclusive, 0, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.mode);
    IStream* stream = reinterpret_cast<IStream*>(this);
    IStorage* storage = reinterpret_cast<IStorage*>(this);
    EXPECT_TRUE(FAILED(root->CreateStream(L"n", row.mode, row.reserved1, row.reserved2, &stream)));
    EXPECT_EQ(nullptr, stream);
    EXPECT_TRUE(
        FAILED(root->CreateStorage(L"n", row.mode, row.reserved1, row.reserved2, &storage)));
    EXPECT_EQ(nullptr, storage);
  }
  EXPECT_EQ(STG_E_FILENOTFOUND, root->DestroyElement(L"n"));
  EXPECT_EQ(STG_E_INVALIDPOINTER, root->CreateStream(L"n", Exclusive, 0, 0, nullptr));
  EXPECT_EQ(STG_E_INVALIDPOINTER, root->Stat(nullptr, STATFLAG_NONAME));
  EXPECT_EQ(STG_E_FILENOTFOUND, root->DestroyElement(L"n"));
}

TEST_F(StorageInterface, ArgumentsOfCreation) {
  STGOPTIONS plain{1, 0, 4096, nullptr}, odd{1, 0, 1024, nullptr}, reserved{1, 1, 4096, nullptr},
      old{0, 0, 4096, nullptr}, small{1, 0, 512, nullptr};
  const DWORD mode = STGM_CREATE | Exclusive;
  const struct {
    STGOPTIONS* options;
    DWORD mode, format, attributes;
    HRESULT result;
    IID id;
  } rows[] = {
      {&plain, mode, STGFMT_DOCFILE, 0, S_OK, IID_IStorage},
      {&small, mode, STGFMT_DOCFILE, 0, S_OK, IID_IUnknown},
      {nullptr, mode, STGFMT_DOCFILE, 0, S_OK, IID_IStorage},
      {&plain, mode, STGFMT_FILE, 0, STG_E_INVALIDPARAMETER, IID_IStorage},
      {&plain, mode, STGFMT_DOCFILE, 1, STG_E_INVALIDPARAMETER, IID_IStorage},
      {&odd, mode, STGFMT_DOCFILE, 0, STG_E_INVALIDPARAMETER, IID_IStorage},
      {&reserved, mode, STGFMT_DOCFILE, 0, STG_E_INVALIDPARAMETER, IID_IStorage},
      {&old, mode, STGFMT_DOCFILE, 0, STG_E_INVALIDPARAMETER, IID_IStorage},
      {&plain, mode, STGFMT_DOCFILE, 0, E_NOINTERFACE, IID_IStream},
      {&plain, STGM_CREATE | STGM_READWRITE, STGFMT_DOCFILE, 0, STG_E_INVALIDFLAG, IID_IStorage},
      {&plain, mode | STGM_TRANSACTED, STGFMT_DOCFILE, 0, STG_E_INVALIDFLAG, IID_IStorage},
  };
  const std::string name = file + ".second";
  const std::wstring wide(name.begin(), name.end());
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    void* made = this;
    EXPECT_EQ(row.result, StgCreateStorageEx(wide.c_str(), row.mode, row.format, row.attributes,
                                             row.options, nullptr, row.id, &made));
    EXPECT_EQ(row.result, KelLastStorageResult());
    EXPECT_EQ(row.result == S_OK, made != nullptr);
    if (made != nullptr) static_cast<IUnknown*>(made)->Release();
    EXPECT_EQ(row.result == S_OK, std::filesystem::remove(name));
  }
  EXPECT_EQ(nullptr, model::CreateFile(file, 4096)) << "the file is open already";
}

TEST_F(StorageInterface, TimesAndClasses) {
  Held<IStorage> storage;
  Make(root, L"storage", storage);
  MakeStream(root, L"stream");
  const FILETIME early{5, 0x01D00000}, late{6, 0x01D10000};
  EXPECT_EQ(S_OK, root->SetElementTimes(L"storage", &early, nullptr, &late));
  EXPECT_EQ(S_OK, root->SetElementTimes(L"stream", &early, nullptr, &late));
  EXPECT_EQ(S_OK, root->SetElementTimes(nullptr, &early, nullptr, &late));
  EXPECT_EQ(STG_E_FILENOTFOUND, root->SetElementTimes(L"none", &early, nullptr, &late));
  EXPECT_EQ(S_OK, root->SetClass(OtherId));
  STATSTG stat;
  ASSERT_EQ(S_OK, root->Stat(&stat, STATFLAG_DEFAULT));
  EXPECT_TRUE(OtherId == stat.clsid);
  EXPECT_EQ(DWORD{STGTY_STORAGE}, stat.type);
  CoTaskMemFree(stat.pwcsName);
  ASSERT_EQ(S_OK, root->Commit(STGC_DEFAULT));
  const compound::Findings findings = compound::CheckFile(file);
  ASSERT_NE(nullptr, findings.Find(u"storage"));
  EXPECT_EQ(0x01D0000000000005U, findings.Find(u"storage")->created);
  EXPECT_EQ(0x01D1000000000006U, findings.Find(u"storage")->modified);
  const std::array<std::uint8_t, 16> id{0x78, 0x56, 0x34, 0x12, 1, 0, 2, 0,
                                        3,    4,    5,    6,    7, 8, 9, 10};
  EXPECT_EQ(id, findings.entries[0].classId);
}

TEST(StorageTargets, AreReplacedOrRefusedUnharmed) {
  namespace fs = std::filesystem;
  const Folder home;
  const std::string folder = home.Path("folder");
  const std::string name = folder + "/file";
  const std::string old(100000, 'o');
  const auto write = [&] { std::ofstream(name, std::ios::binary) << old; };
  const struct {
    const char* target;
    std::function<void()> prepare;
    bool created;
  } rows[] = {
      {"new", [] {}, true},
      {"old file", write, true},
      {"read-only, for the superuser as well", [&] { write(), chmod(name.c_str(), 0444); }, false},
      {"folder", [&] { fs::create_directory(name); }, false},
      {"no parent", [&] { fs::remove_all(folder); }, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.target);
    fs::remove_all(folder);
    fs::create_directories(folder);
    row.prepare();
    const bool wasFile = fs::is_regular_file(name);
    IStorage* storage = model::CreateFile(name, 512);
    EXPECT_EQ(row.created, storage != nullptr);
    if (storage) {
      EXPECT_EQ(0U, storage->Release());
      EXPECT_EQ("", compound::CheckFile(name).Text());
      EXPECT_LT(fs::file_size(name), 4096U);
    } else if (wasFile) {
      EXPECT_EQ(old.size(), fs::file_size(name));
    }
  }
}

}  // namespace
