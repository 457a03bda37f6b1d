/// What each call answers: names, modes, states, lifetimes and targets, in tables.

#include <gtest/gtest.h>

#include <filesystem>
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
      {thirtyOne, S_OK},
      {thirtyOne + L"n", STG_E_INVALIDNAME},
      {pairs + L"n", S_OK},
      {pairs + L"\x1F600", STG_E_INVALIDNAME},
      {L"", STG_E_INVALIDNAME},
      {L"a/b", STG_E_INVALIDNAME},
      {L"a\\b", STG_E_INVALIDNAME},
      {L"a:b", STG_E_INVALIDNAME},
      {L"a!b", STG_E_INVALIDNAME},
      {L"\x0005 \"*?<>|.", S_OK},
  };
  Held<IStream> stream;
  Held<IStorage> storage;
  MakeStream(root, L"old");
  for (const auto& row : rows) {
    SCOPED_TRACE(compound::Utf8(model::Utf16(row.name)));
    const wchar_t* name = row.name.c_str();
    EXPECT_EQ(row.result, root->CreateStream(name, Exclusive, 0, 0, stream.Place()));
    stream.Release();
    EXPECT_EQ(row.result == S_OK, SUCCEEDED(root->DestroyElement(name)));
    EXPECT_EQ(row.result, root->CreateStorage(name, Exclusive, 0, 0, storage.Place()));
    storage.Release();
    EXPECT_EQ(row.result == S_OK, SUCCEEDED(root->DestroyElement(name)));
    EXPECT_EQ(row.result, root->RenameElement(L"old", name));
    EXPECT_EQ(row.result == S_OK, SUCCEEDED(root->RenameElement(name, L"old")));
  }
}

// What is left over when the root is gone only counts its references.
TEST_F(StorageInterface, RevertedWhenTheRootIsGone) {
  Held<IStream> stream, clone;
  Held<IStorage> storage;
  Held<IEnumSTATSTG> list;
  Make(root, L"stream", stream);
  ASSERT_EQ(S_OK, stream->Clone(clone.Place()));
  Make(root, L"storage", storage);
  ASSERT_EQ(S_OK, root->EnumElements(0, nullptr, 0, list.Place()));
  const std::pair<IUnknown*, IID> objects[] = {{stream, IID_IStream},
                                               {clone, IID_ISequentialStream},
                                               {storage, IID_IStorage},
                                               {list, IID_IEnumSTATSTG}};
  for (const auto& [object, own] : objects) {
    for (const IID& id : {own, IID_IUnknown}) {
      void* same = nullptr;
      EXPECT_EQ(S_OK, object->QueryInterface(id, &same));
      EXPECT_EQ(object, static_cast<IUnknown*>(same));
      EXPECT_EQ(1U, object->Release());
    }
    void* other = object;
    EXPECT_EQ(E_NOINTERFACE, object->QueryInterface(OtherId, &other));
    EXPECT_EQ(nullptr, other);
  }
  root.Release();

  char bytes[8] = {};
  STATSTG stat{};
  const ULARGE_INTEGER size{};
  IStream* newStream = nullptr;
  IStorage* newStorage = nullptr;
  IEnumSTATSTG* newList = nullptr;
  const FILETIME time{1, 2};
  const HRESULT results[] = {
      stream->Read(bytes, 4, nullptr),
      stream->Write(bytes, 4, nullptr),
      clone->Write(bytes, 4, nullptr),
      stream->Seek({}, STREAM_SEEK_SET, nullptr),
      stream->SetSize(size),
      stream->CopyTo(clone, size, nullptr, nullptr),
      stream->Commit(STGC_DEFAULT),
      stream->Revert(),
      stream->LockRegion(size, size, 1),
      stream->UnlockRegion(size, size, 1),
      stream->Stat(&stat, STATFLAG_NONAME),
      stream->Clone(&newStream),
      storage->CreateStream(L"n", Exclusive, 0, 0, &newStream),
      storage->OpenStream(L"n", nullptr, Exclusive, 0, &newStream),
      storage->CreateStorage(L"n", Exclusive, 0, 0, &newStorage),
      storage->OpenStorage(L"n", nullptr, Exclusive, nullptr, 0, &newStorage),
      storage->CopyTo(0, nullptr, nullptr, storage),
      storage->MoveElementTo(L"n", storage, L"m", STGMOVE_MOVE),
      storage->Commit(STGC_DEFAULT),
      storage->Revert(),
      storage->EnumElements(0, nullptr, 0, &newList),
      storage->DestroyElement(L"n"),
      storage->RenameElement(L"n", L"m"),
      storage->SetElementTimes(L"n", &time, &time, &time),
      storage->SetClass(OtherId),
      storage->SetStateBits(1, 1),
      storage->Stat(&stat, STATFLAG_NONAME),
      list->Next(1, &stat, nullptr),
      list->Skip(1),
      list->Reset(),
      list->Clone(&newList)};
  for (const HRESULT& result : results) EXPECT_EQ(STG_E_REVERTED, result) << &result - results;
}

TEST_F(StorageInterface, EnumeratorsSkipResetAndClone) {
  for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) MakeStream(root, name);
  Held<IEnumSTATSTG> list, clone;
  ASSERT_EQ(S_OK, root->EnumElements(0, nullptr, 0, list.Place()));
  const auto next = [](IEnumSTATSTG* from) {
    STATSTG stat;
    if (from->Next(1, &stat, nullptr) != S_OK) return L'-';
    const wchar_t name = *stat.pwcsName;
    CoTaskMemFree(stat.pwcsName);
    return name;
  };
  EXPECT_EQ(S_OK, list->Skip(2));
  ASSERT_EQ(S_OK, list->Clone(clone.Place()));
  EXPECT_EQ(L'c', next(list));
  EXPECT_EQ(S_FALSE, list->Skip(2));
  EXPECT_EQ(L'-', next(list));
  EXPECT_EQ(L'c', next(clone));
  EXPECT_EQ(S_OK, list->Reset());
  EXPECT_EQ(L'a', next(list));
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

  const LARGE_INTEGER farthest{{0xFFFFFFFF, 0x7FFFFFFF}};
  const auto seek = [&] { return reader->Seek(farthest, STREAM_SEEK_CUR, nullptr); };
  EXPECT_EQ(STG_E_ACCESSDENIED, reader->Write("x", 1, nullptr));
  EXPECT_EQ(STG_E_ACCESSDENIED, reader->SetSize({}));
  EXPECT_EQ(STG_E_INVALIDFUNCTION, reader->LockRegion({}, {}, 1));
  EXPECT_TRUE(seek() == S_OK && seek() == S_OK);
  EXPECT_EQ(STG_E_INVALIDFUNCTION, seek()) << "beyond 64 bits";
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
    const wchar_t* target;
    const IID* ids;
    SNB names;
  } rows[] = {
      {L"1", &IID_IStream, nullptr}, {L"2", &IID_IStorage, nullptr}, {L"3", nullptr, names}};
  for (const auto& row : rows) {
    Held<IStorage> to;
    Make(root, row.target, to);
    EXPECT_EQ(S_OK, from->CopyTo(row.ids != nullptr ? 1 : 0, row.ids, row.names, to));
    EXPECT_EQ(S_OK, from->CopyTo(row.ids != nullptr ? 1 : 0, row.ids, row.names, to)) << "merged";
  }
  from.Release();
  EXPECT_EQ(S_OK, root->DestroyElement(L"from"));
  ASSERT_EQ(S_OK, root->Commit(STGC_DEFAULT));
  std::set<std::u16string> paths;
  for (const auto& entry : compound::CheckFile(file).entries) paths.insert(entry.path);
  EXPECT_EQ(paths, (std::set<std::u16string>{u"", u"1", u"1/inner", u"2", u"2/stream", u"3",
                                             u"3/inner", u"3/inner/stream"}));
}

// What is not understood is refused, leaves no element and clears the place for the pointer.
TEST_F(StorageInterface, ArgumentsOfElements) {
  for (const DWORD mode :
       {DWORD{STGM_READWRITE}, STGM_READWRITE | STGM_SHARE_DENY_NONE, Exclusive | STGM_TRANSACTED,
        Exclusive | STGM_PRIORITY, Exclusive | STGM_DELETEONRELEASE, Exclusive | 3}) {
    SCOPED_TRACE(mode);
    IStream* stream = reinterpret_cast<IStream*>(this);
    IStorage* storage = reinterpret_cast<IStorage*>(this);
    EXPECT_TRUE(FAILED(root->CreateStream(L"n", mode, 0, 0, &stream)));
    EXPECT_TRUE(FAILED(root->CreateStorage(L"n", mode, 0, 0, &storage)));
    EXPECT_TRUE(stream == nullptr && storage == nullptr);
  }
  EXPECT_EQ(STG_E_INVALIDPOINTER, root->CreateStream(L"n", Exclusive, 0, 0, nullptr));
  EXPECT_EQ(STG_E_INVALIDPOINTER, root->Stat(nullptr, STATFLAG_NONAME));
  EXPECT_EQ(STG_E_FILENOTFOUND, root->DestroyElement(L"n"));
}

TEST_F(StorageInterface, ArgumentsOfCreation) {
  STGOPTIONS odd{1, 0, 1024, nullptr}, old{0, 0, 4096, nullptr}, small{1, 0, 512, nullptr};
  const DWORD mode = STGM_CREATE | Exclusive;
  const struct {
    STGOPTIONS* options;
    DWORD mode, format, attributes;
    HRESULT result;
    IID id;
  } rows[] = {
      {&small, mode, STGFMT_DOCFILE, 0, S_OK, IID_IUnknown},
      {nullptr, mode, STGFMT_DOCFILE, 0, S_OK, IID_IStorage},
      {nullptr, mode, STGFMT_FILE, 0, STG_E_INVALIDPARAMETER, IID_IStorage},
      {nullptr, mode, STGFMT_DOCFILE, 1, STG_E_INVALIDPARAMETER, IID_IStorage},
      {&odd, mode, STGFMT_DOCFILE, 0, STG_E_INVALIDPARAMETER, IID_IStorage},
      {&old, mode, STGFMT_DOCFILE, 0, STG_E_INVALIDPARAMETER, IID_IStorage},
      {nullptr, mode, STGFMT_DOCFILE, 0, E_NOINTERFACE, IID_IStream},
      {nullptr, mode | STGM_TRANSACTED, STGFMT_DOCFILE, 0, STG_E_INVALIDFLAG, IID_IStorage},
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

}  // namespace
