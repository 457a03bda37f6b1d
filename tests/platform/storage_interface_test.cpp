/// What each call answers: names, modes, states, lifetimes and targets, in tables; who may open
/// which file, and why not.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/files.h"
#include "save/kelsave_files.h"
#include "tests/folder.h"
#include "tests/platform/read_storage.h"
#include "tests/platform/storage_model.h"

namespace {

constexpr DWORD Exclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD Reading = STGM_READ | STGM_SHARE_DENY_WRITE;
constexpr DWORD Making = STGM_CREATE | Exclusive;
constexpr GUID OtherId = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

using List = std::unique_ptr<IEnumSTATSTG, kel::detail::Release>;

/// A file that is being written, with a stream and a storage that has a stream, too.
class StorageInterface : public testing::Test {
 protected:
  void SetUp() override {
    root.reset(model::CreateFile(file, 512));
    ASSERT_NE(nullptr, root);
    kel::WriteAll(*kel::CreateStream(*root, L"stream"), "bytes", 5);
    kel::CreateStream(*kel::CreateStorage(*root, L"storage"), L"inner");
  }
  void TearDown() override {
    root.reset();
    EXPECT_EQ("", compound::CheckFile(file).Text());
  }
  List NewList() {
    IEnumSTATSTG* list = nullptr;
    EXPECT_EQ(S_OK, root->EnumElements(0, nullptr, 0, &list));
    return List(list);
  }

  const Folder folder;
  const std::string file = folder.Path("file.cfb");
  kel::Storage root;
};

/// What the calls answer that change something.
std::vector<HRESULT> Changes(IStorage& storage, IStream& stream) {
  const FILETIME time{1, 2};
  IStream* newStream = nullptr;
  IStorage* newStorage = nullptr;
  return {stream.Write("x", 1, nullptr),
          stream.SetSize({}),
          storage.CreateStream(L"new", Exclusive, 0, 0, &newStream),
          storage.CreateStorage(L"new", Exclusive, 0, 0, &newStorage),
          storage.OpenStream(L"stream", nullptr, Exclusive, 0, &newStream),
          storage.OpenStorage(L"storage", nullptr, Exclusive, nullptr, 0, &newStorage),
          storage.MoveElementTo(L"stream", &storage, L"other", STGMOVE_MOVE),
          storage.Commit(STGC_DEFAULT),
          storage.DestroyElement(L"stream"),
          storage.RenameElement(L"stream", L"other"),
          storage.SetElementTimes(L"storage", &time, &time, &time),
          storage.SetClass(OtherId),
          storage.SetStateBits(1, 1)};
}

void ExpectEach(HRESULT expected, const std::vector<HRESULT>& results) {
  for (const HRESULT& result : results) EXPECT_EQ(expected, result) << &result - results.data();
}

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
  for (const auto& row : rows) {
    SCOPED_TRACE(compound::Utf8(model::Utf16(row.name)));
    const wchar_t* name = row.name.c_str();
    IStorage* made = nullptr;
    EXPECT_EQ(row.result, root->CreateStorage(name, Exclusive, 0, 0, &made));
    STATSTG stat{};
    if (made != nullptr && made->Stat(&stat, STATFLAG_DEFAULT) == S_OK) {
      EXPECT_EQ(row.name, kel::detail::TakeName(stat));
      made->Release();
    }
    EXPECT_EQ(row.result == S_OK, SUCCEEDED(root->DestroyElement(name)));
    EXPECT_EQ(row.result, root->RenameElement(L"stream", name));
    EXPECT_EQ(row.result == S_OK, SUCCEEDED(root->RenameElement(name, L"stream")));
  }
}

// What is left over when the root is gone only counts its references.
TEST_F(StorageInterface, RevertedWhenTheRootIsGone) {
  const kel::Stream stream = kel::CreateStream(*root, L"open");
  const kel::Storage storage = kel::CreateStorage(*root, L"open too");
  const List list = NewList();
  const std::pair<IUnknown*, IID> objects[] = {{stream.get(), IID_IStream},
                                               {stream.get(), IID_ISequentialStream},
                                               {storage.get(), IID_IStorage},
                                               {list.get(), IID_IEnumSTATSTG}};
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
  root.reset();

  char bytes[8] = {};
  STATSTG stat{};
  const ULARGE_INTEGER size{};
  IStream* newStream = nullptr;
  IEnumSTATSTG* newList = nullptr;
  ExpectEach(STG_E_REVERTED, Changes(*storage, *stream));
  ExpectEach(
      STG_E_REVERTED,
      {stream->Read(bytes, 4, nullptr), stream->Seek({}, STREAM_SEEK_SET, nullptr),
       stream->CopyTo(stream.get(), size, nullptr, nullptr), stream->Commit(STGC_DEFAULT),
       stream->Revert(), stream->LockRegion(size, size, 1), stream->UnlockRegion(size, size, 1),
       stream->Stat(&stat, STATFLAG_NONAME), stream->Clone(&newStream),
       storage->CopyTo(0, nullptr, nullptr, storage.get()), storage->Revert(),
       storage->EnumElements(0, nullptr, 0, &newList), storage->Stat(&stat, STATFLAG_NONAME),
       list->Next(1, &stat, nullptr), list->Skip(1), list->Reset(), list->Clone(&newList)});
}

TEST_F(StorageInterface, EnumeratorsSkipResetAndClone) {
  const List list = NewList();
  IEnumSTATSTG* clone = nullptr;
  const auto next = [](IEnumSTATSTG& from) {
    STATSTG stat{};
    return from.Next(1, &stat, nullptr) == S_OK ? kel::detail::TakeName(stat) : L"";
  };
  EXPECT_EQ(S_OK, list->Skip(1));
  ASSERT_EQ(S_OK, list->Clone(&clone));
  EXPECT_EQ(S_FALSE, list->Skip(2));
  EXPECT_EQ(L"", next(*list));
  EXPECT_EQ(L"storage", next(*clone));
  clone->Release();
  EXPECT_EQ(S_OK, list->Reset());
  STATSTG all[3];
  ULONG fetched = 0;
  EXPECT_EQ(S_FALSE, list->Next(3, all, &fetched));
  ASSERT_EQ(2U, fetched);
  EXPECT_EQ(L"stream", kel::detail::TakeName(all[0]));
  EXPECT_EQ(L"storage", kel::detail::TakeName(all[1]));
}

// Read-only openings, second openings, and what becomes of an open element that is taken away.
TEST_F(StorageInterface, OpenElements) {
  const kel::Stream reader = kel::OpenStream(*root, L"stream");
  const kel::Storage storage = kel::OpenStorage(*root, L"storage");
  const kel::Stream inner = kel::OpenStream(*storage, L"inner");
  IStream* refused = nullptr;
  STATSTG stat;
  const LARGE_INTEGER farthest{{0xFFFFFFFF, 0x7FFFFFFF}};
  const auto seek = [&] { return reader->Seek(farthest, STREAM_SEEK_CUR, nullptr); };
  ExpectEach(STG_E_ACCESSDENIED, {reader->Write("x", 1, nullptr), reader->SetSize({}),
                                  root->OpenStream(L"stream", nullptr, Exclusive, 0, &refused),
                                  storage->CreateStream(L"new", Exclusive, 0, 0, &refused),
                                  root->RenameElement(L"stream", L"other")});
  EXPECT_EQ(STG_E_INVALIDFUNCTION, reader->LockRegion({}, {}, 1));
  EXPECT_TRUE(seek() == S_OK && seek() == S_OK);
  EXPECT_EQ(STG_E_INVALIDFUNCTION, seek()) << "beyond 64 bits";
  EXPECT_EQ(S_OK, root->DestroyElement(L"storage"));
  kel::CreateStream(*root, L"stream");
  ExpectEach(STG_E_REVERTED,
             {reader->Stat(&stat, STATFLAG_NONAME), storage->Stat(&stat, STATFLAG_NONAME),
              inner->Stat(&stat, STATFLAG_NONAME)});
}

// A stream whose copy would replace the storage it lies in stays where it is.
TEST_F(StorageInterface, CopyOntoItsOwnStorage) {
  const kel::Storage storage = kel::CreateStorage(*root, L"same");
  kel::CreateStream(*storage, L"same");
  EXPECT_EQ(STG_E_ACCESSDENIED, storage->MoveElementTo(L"same", root.get(), L"SAME", STGMOVE_MOVE));
  EXPECT_EQ(STG_E_ACCESSDENIED, storage->CopyTo(0, nullptr, nullptr, root.get()));
  kel::OpenStream(*storage, L"same");
}

// Whole kinds of elements are left out at every depth, named ones at the first only.
TEST_F(StorageInterface, CopiesWithoutWhatIsExcluded) {
  kel::Storage from = kel::CreateStorage(*root, L"from");
  kel::CreateStream(*kel::CreateStorage(*from, L"inner"), L"stream");
  kel::CreateStream(*from, L"stream");
  OLECHAR name[] = L"STREAM";
  LPOLESTR names[] = {name, nullptr};
  const struct {
    const wchar_t* target;
    const IID* ids;
    SNB names;
  } rows[] = {
      {L"1", &IID_IStream, nullptr}, {L"2", &IID_IStorage, nullptr}, {L"3", nullptr, names}};
  for (const auto& row : rows) {
    const kel::Storage to = kel::CreateStorage(*root, row.target);
    for (const char* what : {"copied", "merged"}) {
      EXPECT_EQ(S_OK, from->CopyTo(row.ids != nullptr ? 1 : 0, row.ids, row.names, to.get()))
          << what;
    }
  }
  from.reset();
  for (const wchar_t* other : {L"from", L"stream", L"storage"}) root->DestroyElement(other);
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

// Of creating a file and of opening one.
TEST_F(StorageInterface, ArgumentsOfFiles) {
  STGOPTIONS odd{1, 0, 1024, nullptr}, old{0, 0, 4096, nullptr}, small{1, 0, 512, nullptr};
  STGOPTIONS told{2, 0, 0, nullptr}, later{3, 0, 0, nullptr};
  constexpr auto Create = StgCreateStorageEx, Open = StgOpenStorageEx;
  const struct {
    decltype(Create) call;
    DWORD mode, format, attributes;
    STGOPTIONS* options;
    IID id;
    HRESULT result;
  } rows[] = {
      {Create, Making, STGFMT_DOCFILE, 0, &small, IID_IUnknown, S_OK},
      {Create, Making, STGFMT_DOCFILE, 0, nullptr, IID_IStorage, S_OK},
      {Create, Making, STGFMT_FILE, 0, nullptr, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Create, Making, STGFMT_DOCFILE, 1, nullptr, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Create, Making, STGFMT_DOCFILE, 0, &odd, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Create, Making, STGFMT_DOCFILE, 0, &old, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Create, Making, STGFMT_DOCFILE, 0, nullptr, IID_IStream, E_NOINTERFACE},
      {Create, Making | STGM_TRANSACTED, STGFMT_DOCFILE, 0, nullptr, IID_IStorage,
       STG_E_INVALIDFLAG},
      {Open, Reading, STGFMT_DOCFILE, 0, &told, IID_IStorage, S_OK},
      {Open, Reading, STGFMT_STORAGE, 0, nullptr, IID_IUnknown, S_OK},
      {Open, STGM_TRANSACTED | STGM_SHARE_DENY_NONE, STGFMT_ANY, 0, nullptr, IID_IStorage, S_OK},
      {Open, Reading | STGM_CREATE, STGFMT_ANY, 0, nullptr, IID_IStorage, STG_E_INVALIDFLAG},
      {Open, Exclusive, STGFMT_DOCFILE, 0, nullptr, IID_IStorage, STG_E_ACCESSDENIED},
      {Open, Reading, STGFMT_FILE, 0, nullptr, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Open, Reading, STGFMT_DOCFILE, 0, &later, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Open, Reading, STGFMT_DOCFILE, 0, nullptr, IID_IStream, E_NOINTERFACE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const std::string path = row.call == Create ? folder.Path("new") : file;
    if (row.call == Open) root.reset();
    void* made = this;
    EXPECT_EQ(row.result, row.call(kel::Wide(path).c_str(), row.mode, row.format, row.attributes,
                                   row.options, nullptr, row.id, &made));
    EXPECT_EQ(row.result, KelLastStorageResult());
    EXPECT_EQ(row.result == S_OK, made != nullptr);
    if (made != nullptr) static_cast<IUnknown*>(made)->Release();
    EXPECT_EQ(row.call == Create && row.result == S_OK,
              std::filesystem::remove(folder.Path("new")));
  }
  EXPECT_EQ(512U, told.ulSectorSize);
}

TEST_F(StorageInterface, OpeningRefusesWithTheReason) {
  root.reset();
  const std::string whole = folder.Text("file.cfb");
  const auto with = [&](std::size_t at, const std::string& bytes) {
    return folder.Put(std::to_string(at) + "-" + std::to_string(bytes[0]),
                      std::string(whole).replace(at, bytes.size(), bytes));
  };
  ASSERT_EQ(0, mkfifo(folder.Path("pipe").c_str(), 0600));
  const std::string text = "A text of more than a few bytes.\n";
  const struct {
    std::string path;
    HRESULT result, isStorage;
  } rows[] = {
      {file, S_OK, S_OK},
      {folder.Put("text", text), STG_E_FILEALREADYEXISTS, S_FALSE},
      {with(0, "\x0E\x11\xFC\x0D\xD0\xCF\x11\x0E"), STG_E_OLDFORMAT, S_FALSE},
      {folder.Put("cut header", whole.substr(0, 511)), STG_E_INVALIDHEADER, S_OK},
      {with(26, "\2"), STG_E_OLDFORMAT, S_OK},
      {with(26, "\5"), STG_E_OLDDLL, S_OK},
      {with(28, "\xFF\xFE"), STG_E_INVALIDHEADER, S_OK},
      {with(32, "\7"), STG_E_INVALIDHEADER, S_OK},
      {with(49, "\1"), STG_E_DOCFILECORRUPT, S_OK},
      {folder.Path("none"), STG_E_FILENOTFOUND, STG_E_FILENOTFOUND},
      {folder.Path("none/none"), STG_E_PATHNOTFOUND, STG_E_PATHNOTFOUND},
      {folder.Root(), STG_E_ACCESSDENIED, STG_E_ACCESSDENIED},
      {folder.Path("pipe"), STG_E_ACCESSDENIED, STG_E_ACCESSDENIED},
      {folder.Path(std::string(300, 'n')), STG_E_INVALIDNAME, STG_E_INVALIDNAME},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    HRESULT result = S_OK;
    const kel::Storage opened(OpenForReading(row.path, &result));
    EXPECT_EQ(row.result, result);
    EXPECT_EQ(row.isStorage, StgIsStorageFile(kel::Wide(row.path).c_str()));
  }
}

/// Who may have a file that another has open. What is refused loses nothing. Through a reader
/// nothing is written.
TEST_F(StorageInterface, ReadersAndWritersOfOneFile) {
  const std::wstring path = kel::Wide(file);
  HRESULT result = S_OK;
  EXPECT_EQ(nullptr, OpenForReading(file, &result)) << "while it is written";
  EXPECT_EQ(STG_E_SHAREVIOLATION, result);
  EXPECT_EQ(nullptr, model::CreateFile(file, 512)) << "a save over it";
  EXPECT_EQ(-1, files::remove(file.c_str()));
  root.reset();

  const std::string whole = folder.Text("file.cfb");
  kel::Storage reader(OpenForReading(file, &result));
  const kel::Stream stream = kel::OpenStream(*reader, L"STREAM");
  kel::Storage second(OpenForReading(file, &result));
  EXPECT_EQ(S_OK, result) << "two readers";
  second.reset();
  IStorage* refused = nullptr;
  EXPECT_EQ(STG_E_SHAREVIOLATION,
            StgOpenStorage(path.c_str(), nullptr, STGM_SHARE_EXCLUSIVE, nullptr, 0, &refused));
  EXPECT_EQ(nullptr, model::CreateFile(file, 512)) << "a save over it";
  EXPECT_EQ(STG_E_SHAREVIOLATION, KelLastStorageResult());
  EXPECT_EQ(-1, files::rename(file.c_str(), folder.Path("backup").c_str()));
  EXPECT_EQ(-1, files::remove(file.c_str()));
  ExpectEach(STG_E_ACCESSDENIED, Changes(*reader, *stream));
  EXPECT_EQ(whole, folder.Text("file.cfb"));
  reader.reset();
  EXPECT_EQ(STG_E_REVERTED, stream->Revert());
  EXPECT_EQ(0, files::rename(file.c_str(), folder.Path("backup").c_str()));
  EXPECT_EQ(0, files::remove(folder.Path("backup").c_str()));
  kel::Storage(model::CreateFile(file, 512));
}

/// From a file that is read to one that is being written, of the other sector size.
TEST_F(StorageInterface, CopiesToAFileThatIsWritten) {
  const auto model = model::RandomRun(folder.Path("from"), 7, 4096, 1000);
  HRESULT result = S_OK;
  const kel::Storage from(OpenForReading(folder.Path("from"), &result));
  for (const wchar_t* own : {L"stream", L"storage"}) root->DestroyElement(own);
  EXPECT_EQ(S_OK, from->CopyTo(0, nullptr, nullptr, root.get()));
  EXPECT_EQ(STG_E_ACCESSDENIED, root->CopyTo(0, nullptr, nullptr, from.get()));
  root.reset();
  for (auto& [name, child] : model->children) child->created = 0;  // copies have times of their own
  model::ExpectReads(file, *model);
}

}  // namespace
