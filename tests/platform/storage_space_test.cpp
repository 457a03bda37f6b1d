/// No space. What is demanded, for each limit on the file's size or on its file system:
/// - A call that fails for lack of space says STG_E_MEDIUMFULL; the process lives on, whether
///   SIGXFSZ is ignored or at its default.
/// - Space that a successful call needs is taken by then: that something else fills the disk before
///   the last Release does no harm.
/// - After the last Release the file is valid in structure, and each stream holds, from its
///   start, all bytes that a call reported as written. So when every call succeeded it is complete.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>

#include "tests/folder.h"
#include "tests/platform/storage_model.h"

namespace {

constexpr DWORD Exclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

enum Action { MakeStorage, MakeStream, WriteBytes, GiveSize, CommitAll };

struct Step {
  Action action;
  ULONG size;
  int times;
};

// Each step acts on the stream made last.
constexpr Step Script[] = {
    {MakeStream, 0, 1},     {WriteBytes, 100, 1}, {MakeStream, 0, 1},   {WriteBytes, 1000, 9},
    {MakeStream, 0, 30},    {WriteBytes, 64, 3},  {CommitAll, 0, 1},    {MakeStream, 0, 1},
    {WriteBytes, 65536, 5}, {MakeStorage, 0, 1},  {MakeStream, 0, 20},  {WriteBytes, 4095, 1},
    {WriteBytes, 1, 1},     {MakeStream, 0, 1},   {GiveSize, 70000, 1}, {GiveSize, 10, 1},
    {GiveSize, 40000, 1},   {MakeStorage, 0, 9},  {MakeStream, 0, 1},   {WriteBytes, 300000, 1},
    {CommitAll, 0, 1},
};
constexpr int MaxStreams = 64;

/// What the script saw; lives in memory that the child shares with its parent.
struct Log {
  HRESULT created;
  HRESULT failures[4];  // the first few failures; 0 is none
  int failureCount;
  int calls;
  int streams;
  ULONG written[MaxStreams];  // bytes that were reported as written
  ULONG sizes[MaxStreams];    // and the least size that follows from the successful calls
  bool finished;
};

char Pattern(int stream, std::size_t offset) {
  return static_cast<char>((static_cast<std::size_t>(stream) * 31 + offset) % 251);
}

/// Takes all space that its file system has left.
void Fill(const std::string& fileName) {
  std::ofstream filler(fileName, std::ios::binary);
  const std::string page(4096, 'f');
  while (filler.write(page.data(), 4096).flush()) {
  }
}

/// How a script is run: whether it goes on after a failure, when it stops in any case, and the
/// file, if any, that takes all space before the last Release.
struct Manner {
  bool stubborn = false;
  int calls = 1 << 30;
  std::string filler;
};

class ScriptRun {
 public:
  ScriptRun(const std::string& file, ULONG sectorSize, const Manner& manner, Log& target)
      : log(target) {
    STGOPTIONS options{};
    options.usVersion = 1;
    options.ulSectorSize = sectorSize;
    void* made = nullptr;
    const std::wstring wide(file.begin(), file.end());
    log.created = StgCreateStorageEx(wide.c_str(), STGM_CREATE | Exclusive, STGFMT_DOCFILE, 0,
                                     &options, nullptr, IID_IStorage, &made);
    storage = static_cast<IStorage*>(made);
    if (FAILED(log.created)) return;
    for (const Step& step : Script) {
      for (int i = 0; i < step.times && log.calls < manner.calls; ++i) {
        if (manner.stubborn || log.failureCount == 0) Apply(step);
      }
    }
    if (!manner.filler.empty()) Fill(manner.filler);
    if (stream) stream->Release();
    storage->Release();
    log.finished = true;
  }

 private:
  bool Note(HRESULT result) {
    ++log.calls;
    if (FAILED(result) && log.failureCount < 4) log.failures[log.failureCount] = result;
    if (FAILED(result)) ++log.failureCount;
    return SUCCEEDED(result);
  }

  void Apply(const Step& step) {
    if (step.action == MakeStorage) NewStorage();
    if (step.action == MakeStream) NewStream();
    if (step.action == WriteBytes && stream) Write(step.size);
    if (step.action == GiveSize && stream) Resize(step.size);
    if (step.action == CommitAll) Note(storage->Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE));
  }

  void NewStorage() {
    const std::wstring name = L"storage " + std::to_wstring(log.calls);
    IStorage* made = nullptr;
    if (!Note(storage->CreateStorage(name.c_str(), Exclusive, 0, 0, &made))) return;
    made->Release();
  }

  void NewStream() {
    if (stream) stream->Release();
    stream = nullptr;
    const std::wstring name = L"stream " + std::to_wstring(log.streams);
    if (Note(storage->CreateStream(name.c_str(), Exclusive, 0, 0, &stream))) ++log.streams;
  }

  void Write(ULONG size) {
    ULONG& before = log.written[log.streams - 1];
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = Pattern(log.streams - 1, before + i);
    ULONG written = 0;
    if (Note(stream->Write(bytes.data(), size, &written)) && written != size) Note(E_FAIL);
    before += written;
    log.sizes[log.streams - 1] = before;
  }

  /// Only for streams without bytes.
  void Resize(ULONG size) {
    ULARGE_INTEGER wanted;
    wanted.QuadPart = size;
    if (Note(stream->SetSize(wanted))) log.sizes[log.streams - 1] = size;
  }

  Log& log;
  IStorage* storage = nullptr;
  IStream* stream = nullptr;
};

/// The demands of this file's head.
void ExpectDemands(const std::string& fileName, const Log& log) {
  if (FAILED(log.created)) {
    EXPECT_EQ(STG_E_MEDIUMFULL, log.created);
    EXPECT_FALSE(std::filesystem::exists(fileName));
    return;
  }
  ASSERT_TRUE(log.finished);
  for (int i = 0; i < std::min(log.failureCount, 4); ++i) {
    EXPECT_EQ(STG_E_MEDIUMFULL, log.failures[i]);
  }
  const compound::Findings findings = compound::CheckFile(fileName);
  EXPECT_EQ("", findings.Text());
  std::ifstream file(fileName, std::ios::binary);
  for (int i = 0; i < log.streams; ++i) {
    const std::string digits = std::to_string(i);
    const compound::Entry* entry =
        findings.Find(u"stream " + std::u16string(digits.begin(), digits.end()));
    ASSERT_NE(nullptr, entry) << "stream " << i;
    ASSERT_LE(log.sizes[i], entry->size) << "stream " << i;
    EXPECT_TRUE(log.failureCount != 0 || log.sizes[i] == entry->size) << "stream " << i;
    const std::string bytes = compound::Contents(file, *entry);
    ULONG same = 0;
    while (same < log.written[i] && bytes[same] == Pattern(i, same)) ++same;
    EXPECT_EQ(log.written[i], same) << "stream " << i << " differs there";
  }
}

struct Sweep {
  std::uint64_t end, step;
};

std::vector<std::uint64_t> Limits(std::initializer_list<Sweep> sweeps) {
  std::vector<std::uint64_t> limits;
  std::uint64_t limit = 0;
  for (const Sweep& sweep : sweeps) {
    for (; limit < sweep.end; limit += sweep.step) limits.push_back(limit);
  }
  return limits;
}

class StorageSpace : public testing::TestWithParam<ULONG> {
 protected:
  void SetUp() override {
    void* shared =
        mmap(nullptr, sizeof(Log), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, shared);
    log = static_cast<Log*>(shared);
  }
  void TearDown() override { munmap(log, sizeof(Log)); }

  void RunUnderLimit(const std::string& fileName, rlim_t limit, bool ignored, bool stubborn) {
    *log = Log{};
    const pid_t child = fork();
    if (child == 0) {
      std::signal(SIGXFSZ, ignored ? SIG_IGN : SIG_DFL);
      const rlimit limits{limit, limit};
      if (setrlimit(RLIMIT_FSIZE, &limits) != 0) _exit(2);
      ScriptRun(fileName, GetParam(), {stubborn, 1 << 30, ""}, *log);
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    ASSERT_EQ(0, status) << "the child died or could not be limited";
  }

  const Folder home;
  Log* log = nullptr;
};

INSTANTIATE_TEST_SUITE_P(SectorSizes, StorageSpace, testing::Values(512, 4096));

TEST_P(StorageSpace, FileSizeLimit) {
  const std::string fileName = home.Path("limit.cfb");
  int complete = 0, refused = 0, partial = 0;
  for (const std::uint64_t limit :
       Limits({{48 << 10, 512}, {640 << 10, 4608}, {4 << 20, 1 << 18}})) {
    for (const int way : {0, 1, 2, 3}) {
      SCOPED_TRACE("limit " + std::to_string(limit) + ", way " + std::to_string(way));
      if (HasFailure()) continue;
      RunUnderLimit(fileName, limit, (way & 1) != 0, (way & 2) != 0);
      ExpectDemands(fileName, *log);
      ++(FAILED(log->created) ? refused : log->failureCount != 0 ? partial : complete);
      std::filesystem::remove(fileName);
    }
  }
  EXPECT_GT(refused, 0);
  EXPECT_GT(partial, 100);
  EXPECT_GT(complete, 0);
}

/// While it lives, no file of this process grows beyond `size`.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size) {
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limits{size, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limits);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }

 private:
  rlimit before{};
};

TEST_P(StorageSpace, RefusedReplacementKeepsTheOld) {
  const std::string fileName = home.Path("kept.cfb");
  const std::wstring wide(fileName.begin(), fileName.end());
  STGOPTIONS options{1, 0, GetParam(), nullptr};
  const auto create = [&](void** made) {
    return StgCreateStorageEx(wide.c_str(), STGM_CREATE | Exclusive, STGFMT_DOCFILE, 0, &options,
                              nullptr, IID_IStorage, made);
  };
  void* made = nullptr;
  for (const int size : {8, 100000}) {
    const std::string old(static_cast<std::size_t>(size), 'o');
    std::ofstream(fileName) << old;
    const FileSizeLimit limit(1024);
    EXPECT_EQ(STG_E_MEDIUMFULL, create(&made));
    std::ifstream file(fileName);
    EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(file), {}) == old) << size;
  }

  ASSERT_EQ(S_OK, create(&made));
  auto* root = static_cast<IStorage*>(made);
  IStream* old = nullptr;
  ASSERT_EQ(S_OK, root->CreateStream(L"old", Exclusive, 0, 0, &old));
  ASSERT_EQ(S_OK, old->Write("bytes", 5, nullptr));
  {
    const FileSizeLimit limit(64 << 10);
    IStream* more = nullptr;
    for (int i = 0; root->CreateStream(std::to_wstring(i).c_str(), Exclusive, 0, 0, &more) == S_OK;
         ++i) {
      more->Release();
    }
    IStorage* storage = nullptr;
    const DWORD mode = STGM_CREATE | Exclusive;
    EXPECT_EQ(STG_E_MEDIUMFULL, root->CreateStream(L"OLD", mode, 0, 0, &more));
    EXPECT_EQ(STG_E_MEDIUMFULL, root->CreateStorage(L"old", mode, 0, 0, &storage));
  }
  EXPECT_EQ(S_OK, old->Write("more", 4, nullptr));  // neither replaced nor cut off
  old->Release();
  root->Release();
  const compound::Findings findings = compound::CheckFile(fileName);
  EXPECT_EQ("", findings.Text());
  ASSERT_NE(nullptr, findings.Find(u"old"));
  EXPECT_EQ(9U, findings.Find(u"old")->size);
}

// The part of a failed write that reached the file is not seen again.
TEST_P(StorageSpace, ZerosAfterAFailedWrite) {
  const std::string fileName = home.Path("zeros.cfb");
  IStorage* root = model::CreateFile(fileName, GetParam());
  ASSERT_NE(nullptr, root);
  IStream* stream = nullptr;
  ASSERT_EQ(S_OK, root->CreateStream(L"stream", Exclusive, 0, 0, &stream));
  ULARGE_INTEGER size{{3 << 20, 0}};
  const ULARGE_INTEGER none{};
  ASSERT_EQ(S_OK, stream->SetSize(size));
  ASSERT_EQ(S_OK, stream->SetSize(none));
  std::string bytes(size.LowPart, 'x');
  ULONG done = 0;
  {
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    const FileSizeLimit limit(1 << 20);
    EXPECT_EQ(STG_E_MEDIUMFULL, stream->Write(bytes.data(), size.LowPart, &done));
    std::signal(SIGXFSZ, before);
  }
  EXPECT_EQ(S_OK, stream->SetSize(size));
  EXPECT_EQ(S_OK, stream->Seek({{done, 0}}, STREAM_SEEK_SET, nullptr));
  EXPECT_EQ(S_OK, stream->Read(bytes.data(), size.LowPart, &done));
  EXPECT_EQ(std::string::npos, bytes.substr(0, done).find('x'));
  stream->Release();
  root->Release();
}

/// A real file system of a given size, in a mount namespace of this process's own.
class FileSystem {
 public:
  FileSystem(const std::string& place, std::uint64_t size) : folder(place) {
    std::filesystem::create_directories(folder);
    const std::string options = "size=" + std::to_string(size);
    static const bool isolated =
        unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    mounted = isolated && mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
  }
  FileSystem(const FileSystem&) = delete;
  FileSystem& operator=(const FileSystem&) = delete;
  ~FileSystem() {
    if (mounted) umount(folder.c_str());
  }

  const std::string folder;
  bool mounted = false;
};

TEST_P(StorageSpace, FullFileSystem) {
  const std::string folder = home.Path("full");
  if (!FileSystem(folder, 1 << 16).mounted) GTEST_SKIP() << "mounting is not permitted here";
  int complete = 0, refused = 0, partial = 0;
  for (const std::uint64_t limit :
       Limits({{96 << 10, 4096}, {1 << 20, 20480}, {4 << 20, 1 << 20}})) {
    for (const bool stubborn : {false, true}) {
      SCOPED_TRACE("limit " + std::to_string(limit));
      if (limit == 0 || HasFailure()) continue;
      const FileSystem place(folder, limit);
      ASSERT_TRUE(place.mounted);
      *log = Log{};
      ScriptRun(folder + "/file.cfb", GetParam(), {stubborn, 1 << 30, ""}, *log);
      ExpectDemands(folder + "/file.cfb", *log);
      ++(FAILED(log->created) ? refused : log->failureCount != 0 ? partial : complete);
    }
  }
  EXPECT_GT(partial, 50);
  EXPECT_GT(complete, 0);
}

TEST_P(StorageSpace, FilledByOthersBeforeTheEnd) {
  const std::string folder = home.Path("filled");
  if (!FileSystem(folder, 1 << 16).mounted) GTEST_SKIP() << "mounting is not permitted here";
  for (int calls = 0; calls < 90 && !HasFailure(); ++calls) {
    SCOPED_TRACE("calls " + std::to_string(calls));
    const FileSystem place(folder, 8 << 20);
    *log = Log{};
    ScriptRun(folder + "/file.cfb", GetParam(), {false, calls, folder + "/filler"}, *log);
    EXPECT_EQ(0, log->failureCount);
    ExpectDemands(folder + "/file.cfb", *log);
  }
}

}  // namespace
