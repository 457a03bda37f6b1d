/// Opening files for reading: what is refused and why, and who may have the file meanwhile.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/files.h"
#include "tests/folder.h"
#include "tests/platform/read_storage.h"
#include "tests/platform/storage_model.h"

namespace {

constexpr DWORD Reading = STGM_READ | STGM_SHARE_DENY_WRITE;
constexpr DWORD Exclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

std::wstring Wide(const std::string& text) { return {text.begin(), text.end()}; }

/// A file with a stream and a storage; its bytes.
std::string MakeFile(const std::string& path, ULONG sectorSize = 512) {
  IStorage* root = model::CreateFile(path, sectorSize);
  IStorage* storage = nullptr;
  IStream* stream = nullptr;
  EXPECT_EQ(S_OK, root->CreateStream(L"stream", Exclusive, 0, 0, &stream));
  EXPECT_EQ(S_OK, stream->Write("bytes", 5, nullptr));
  EXPECT_EQ(S_OK, root->CreateStorage(L"storage", Exclusive, 0, 0, &storage));
  stream->Release();
  storage->Release();
  root->Release();
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(StorageOpening, RefusesWithTheReason) {
  const Folder folder;
  const std::string whole = MakeFile(folder.Path("whole"));
  const auto put = [&](const char* name, const std::string& bytes) {
    return folder.Put(name, bytes);
  };
  const auto with = [&](std::size_t at, const std::string& bytes) {
    return folder.Put(std::to_string(at) + "-" + std::to_string(bytes[0]),
                      std::string(whole).replace(at, bytes.size(), bytes));
  };
  ASSERT_EQ(0, mkfifo(folder.Path("pipe").c_str(), 0600));
  const struct {
    std::string path;
    HRESULT result, isStorage;
  } rows[] = {
      {folder.Path("whole"), S_OK, S_OK},
      {put("text", "A text of more than a few bytes.\n"), STG_E_FILEALREADYEXISTS, S_FALSE},
      {with(0, "\x0E\x11\xFC\x0D\xD0\xCF\x11\x0E"), STG_E_OLDFORMAT, S_FALSE},
      {put("cut header", whole.substr(0, 511)), STG_E_INVALIDHEADER, S_OK},
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
    IStorage* root = OpenForReading(row.path, &result);
    EXPECT_EQ(row.result, result);
    EXPECT_EQ(row.result, KelLastStorageResult());
    EXPECT_EQ(row.isStorage, StgIsStorageFile(Wide(row.path).c_str()));
    if (root != nullptr) root->Release();
  }
}

TEST(StorageOpening, Arguments) {
  const Folder folder;
  const std::wstring path = Wide(folder.Path("file"));
  MakeFile(folder.Path("file"), 4096);
  STGOPTIONS plain{2, 0, 0, nullptr}, odd{3, 0, 0, nullptr};
  const struct {
    DWORD mode, format, attributes;
    STGOPTIONS* options;
    IID id;
    HRESULT result;
  } rows[] = {
      {Reading, STGFMT_DOCFILE, 0, &plain, IID_IStorage, S_OK},
      {Reading, STGFMT_STORAGE, 0, nullptr, IID_IUnknown, S_OK},
      {STGM_TRANSACTED | STGM_SHARE_DENY_NONE, STGFMT_ANY, 0, nullptr, IID_IStorage, S_OK},
      {Reading | STGM_CREATE, STGFMT_ANY, 0, nullptr, IID_IStorage, STG_E_INVALIDFLAG},
      {Exclusive, STGFMT_DOCFILE, 0, nullptr, IID_IStorage, STG_E_ACCESSDENIED},
      {Reading, STGFMT_FILE, 0, nullptr, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Reading, STGFMT_DOCFILE, 0, &odd, IID_IStorage, STG_E_INVALIDPARAMETER},
      {Reading, STGFMT_DOCFILE, 0, nullptr, IID_IStream, E_NOINTERFACE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    void* opened = this;
    EXPECT_EQ(row.result, StgOpenStorageEx(path.c_str(), row.mode, row.format, row.attributes,
                                           row.options, nullptr, row.id, &opened));
    EXPECT_EQ(row.result == S_OK, opened != nullptr);
    if (opened != nullptr) static_cast<IUnknown*>(opened)->Release();
  }
  EXPECT_EQ(4096U, plain.ulSectorSize);
}

TEST(StorageOpening, NothingIsWritten) {
  const Folder folder;
  MakeFile(folder.Path("file"));
  HRESULT result = S_OK;
  IStorage* root = OpenForReading(folder.Path("file"), &result);
  ASSERT_NE(nullptr, root);
  constexpr DWORD read = STGM_READ | STGM_SHARE_EXCLUSIVE;
  IStream *stream = nullptr, *newStream = nullptr;
  IStorage *storage = nullptr, *newStorage = nullptr;
  ASSERT_EQ(S_OK, root->OpenStream(L"STREAM", nullptr, read, 0, &stream));
  ASSERT_EQ(S_OK, root->OpenStorage(L"STORAGE", nullptr, read, nullptr, 0, &storage));
  const FILETIME time{1, 2};
  const HRESULT results[] = {stream->Write("x", 1, nullptr),
                             stream->SetSize({}),
                             storage->CreateStorage(L"new", Exclusive, 0, 0, &newStorage),
                             root->OpenStream(L"stream", nullptr, Exclusive, 0, &newStream),
                             root->Commit(STGC_DEFAULT),
                             root->DestroyElement(L"stream"),
                             root->RenameElement(L"stream", L"other"),
                             root->MoveElementTo(L"stream", storage, L"stream", STGMOVE_MOVE),
                             root->SetElementTimes(L"storage", &time, &time, &time),
                             storage->SetClass(IID_IStream)};
  for (const HRESULT& each : results) EXPECT_EQ(STG_E_ACCESSDENIED, each) << &each - results;
  root->Release();
  EXPECT_EQ(STG_E_REVERTED, stream->Revert());
  stream->Release();
  storage->Release();
}

/// Who may have a file that another has open. What is refused loses nothing.
TEST(StorageOpening, ReadersAndWritersOfOneFile) {
  const Folder folder;
  const std::string path = folder.Path("file");
  const std::string whole = MakeFile(path);
  HRESULT result = S_OK;
  IStorage* reader = OpenForReading(path, &result);
  IStorage* second = OpenForReading(path, &result);
  ASSERT_NE(nullptr, reader);
  EXPECT_NE(nullptr, second) << "two readers";
  second->Release();
  IStorage* refused = nullptr;
  EXPECT_EQ(STG_E_SHAREVIOLATION,
            StgOpenStorage(Wide(path).c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr,
                           0, &refused));
  EXPECT_EQ(nullptr, model::CreateFile(path, 512)) << "a save over it";
  EXPECT_EQ(STG_E_SHAREVIOLATION, KelLastStorageResult());
  EXPECT_EQ(-1, files::rename(path.c_str(), folder.Path("backup").c_str()));
  EXPECT_EQ(-1, files::remove(path.c_str()));
  EXPECT_EQ(whole, folder.Text("file"));
  reader->Release();

  IStorage* writer = model::CreateFile(path, 512);
  ASSERT_NE(nullptr, writer);
  EXPECT_EQ(nullptr, OpenForReading(path, &result));
  EXPECT_EQ(STG_E_SHAREVIOLATION, result);
  EXPECT_EQ(-1, files::remove(path.c_str()));
  writer->Release();
  EXPECT_EQ(0, files::remove(path.c_str()));
}

/// From a file that is read to one that is being written, of the other sector size.
TEST(StorageOpening, CopiesToAFileThatIsWritten) {
  const Folder folder;
  const auto model = model::RandomRun(folder.Path("from"), 7, 512, 1000);
  HRESULT result = S_OK;
  IStorage* from = OpenForReading(folder.Path("from"), &result);
  IStorage* to = model::CreateFile(folder.Path("to"), 4096);
  ASSERT_NE(nullptr, from);
  EXPECT_EQ(S_OK, from->CopyTo(0, nullptr, nullptr, to));
  EXPECT_EQ(STG_E_ACCESSDENIED, to->CopyTo(0, nullptr, nullptr, from));
  from->Release();
  to->Release();
  for (auto& [name, child] : model->children) child->created = 0;  // copies have times of their own
  model::ExpectReads(folder.Path("to"), *model);
}

}  // namespace
