/// The disk fails at one call or from one call on, for every call that there is, and a disk is
/// really full. What is demanded each time:
/// - A creation that is refused leaves an old file as it was, and no new one.
/// - A failed call has changed nothing but for the bytes that it reports as written.
/// - When Commit succeeds the file is valid and holds all that was accepted. So it does at the end,
///   unless the disk still fails then; for lack of space it never does.
/// - Commit waits for the file and, the first time, for its folder; once waiting has failed it
///   fails always. Nothing is written twice.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "platform/compound_storage.h"
#include "platform/files.h"
#include "tests/failing_disk.h"
#include "tests/folder.h"
#include "tests/platform/read_storage.h"
#include "tests/platform/storage_model.h"

namespace {

constexpr DWORD Exclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
using model::Piece;

enum Action { MakeStorage, MakeStream, Write, GoTo, Resize, Rename, Destroy, Commit };

struct Step {
  Action action;
  std::uint32_t size = 0;
  int times = 1;
};

// Each step acts on the stream made last, or the one before it.
constexpr Step Script[] = {
    {MakeStream},        {Write, 100},       {MakeStream},      {Write, 1000, 9},
    {MakeStream},        {Resize, 70000},    {Resize, 10},      {Resize, 40000},
    {MakeStorage},       {MakeStream, 0, 9}, {Write, 64, 3},    {Resize, 90000},
    {Resize, 10},        {Commit},           {Resize, 90000},   {MakeStream, 0, 3},
    {MakeStream},        {Write, 5 * 65536}, {Rename},          {GoTo, 0},
    {Write, 4095},       {Write, 2 * Piece}, {GoTo, 700},       {Write, 3 * Piece},
    {MakeStream},        {Write, Piece / 2}, {GoTo, Piece / 4}, {Write, Piece * 2},
    {GoTo, 5 * Piece},   {Write, 1},         {Write, 900},      {GoTo, 5 * Piece + 500},
    {Write, 65536},      {Resize, 4095},     {Resize, Piece},   {Destroy},
    {MakeStream, 0, 40}, {Write, 300000},    {Commit},
};

/// The script on a file, and the same on a model as far as calls succeed.
class ScriptRun {
 public:
  ScriptRun(const std::string& file, ULONG sectorSize) : file_(file) {
    // Files in memory count as large early.
    const CompoundParameters parameters{sectorSize, 4096, 0x7FFFFF00, 2 * Piece};
    static_cast<void>(CreateCompoundFile(file.c_str(), L"x", parameters, &root_));
    model_.isStorage = true;
  }

  bool IsCreated() const { return root_ != nullptr; }
  const model::Node& Model() const { return model_; }
  int Failures() const { return failures_; }
  HRESULT Last() const { return last_; }

  /// Goes as far as `calls` calls.
  void Steps(int calls = 1000) {
    for (const Step& step : Script) {
      for (int i = 0; i < step.times && calls-- > 0; ++i) Apply(step);
    }
  }

  HRESULT CommitAll(DWORD flags = STGC_DEFAULT) {
    const HRESULT result = root_->Commit(flags);
    if (Note(result)) model::ExpectFileHolds(file_, model_);
    return result;
  }

  void NewStream() {
    if (stream_ != nullptr) stream_->Release();
    stream_ = nullptr;
    const std::wstring name = L"stream " + std::to_wstring(++made_);
    if (!Note(root_->CreateStream(name.c_str(), Exclusive, 0, 0, &stream_))) return;
    node_ = model_.children[model::Utf16(name)] = std::make_shared<model::Node>();
    position_ = 0;
  }

  void End() {
    if (stream_ != nullptr) stream_->Release();
    root_->Release();
  }

 private:
  bool Note(HRESULT result) {
    if (FAILED(result)) ++failures_, last_ = result;
    return SUCCEEDED(result);
  }

  void Apply(const Step& step) {
    if (step.action == MakeStorage) NewStorage();
    if (step.action == MakeStream) NewStream();
    if (step.action == Commit) CommitAll(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE);
    if (step.action == Rename || step.action == Destroy) Older(step.action);
    if (stream_ == nullptr) return;
    if (step.action == Write) WriteBytes(step.size);
    if (step.action == GoTo && Note(stream_->Seek({{step.size, 0}}, STREAM_SEEK_SET, nullptr))) {
      position_ = step.size;
    }
    if (step.action == Resize && Note(stream_->SetSize({{step.size, 0}}))) {
      node_->bytes.resize(step.size);
    }
  }

  void NewStorage() {
    IStorage* made = nullptr;
    if (!Note(root_->CreateStorage(L"storage", Exclusive, 0, 0, &made))) return;
    made->Release();
    (model_.children[u"storage"] = std::make_shared<model::Node>())->isStorage = true;
  }

  /// Renames or destroys the stream before the last one, so that its sectors are used again.
  void Older(Action action) {
    const std::wstring name = L"stream " + std::to_wstring(made_ - 1);
    const auto found = model_.children.find(model::Utf16(name));
    if (found == model_.children.end()) return;
    const auto node = found->second;
    const bool done = Note(action == Rename ? root_->RenameElement(name.c_str(), L"other")
                                            : root_->DestroyElement(name.c_str()));
    if (!done) return;
    model_.children.erase(found);
    if (action == Rename) model_.children[u"other"] = node;
  }

  void WriteBytes(std::uint32_t size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>((state_ = state_ * 69069 + 1) >> 24);
    ULONG written = 0;
    const bool isDone = Note(stream_->Write(bytes.data(), size, &written));
    EXPECT_EQ(isDone, size == written);
    std::string& all = node_->bytes;
    if (written > 0) all.resize(std::max<std::size_t>(all.size(), position_ + written));
    all.replace(written > 0 ? position_ : 0, written, bytes, 0, written);
    position_ += written;
  }

  const std::string file_;
  IStorage* root_ = nullptr;
  IStream* stream_ = nullptr;
  std::shared_ptr<model::Node> node_;
  std::size_t position_ = 0;
  model::Node model_;
  int made_ = 0;
  int failures_ = 0;
  HRESULT last_ = S_OK;
  std::uint32_t state_ = 1;
};

class StorageDisk : public testing::TestWithParam<ULONG> {
 protected:
  const Folder folder;
};

INSTANTIATE_TEST_SUITE_P(SectorSizes, StorageDisk, testing::Values(512, 4096));

TEST_P(StorageDisk, EveryCallFails) {
  const bool isLarge = GetParam() == 4096;
  const int error = isLarge ? ENOSPC : EIO;
  for (const FailingDisk::Mode mode : {FailingDisk::Mode::Once, FailingDisk::Mode::FromThenOn}) {
    bool hasFailed = true;
    for (int n = 1; hasFailed && !HasFailure(); ++n) {
      SCOPED_TRACE("call " + std::to_string(n));
      const std::string old(n % 2 == 0 ? 700 : 100000, 'o');
      const std::string file = folder.Put("scene", old);
      FailingDisk disk(n, error, mode);
      ScriptRun run(file, GetParam());
      if (!run.IsCreated()) {
        EXPECT_EQ(old, folder.Text("scene"));
        continue;
      }
      run.Steps();
      if (isLarge && run.Failures() > 0) {
        EXPECT_TRUE(run.Last() == STG_E_MEDIUMFULL || run.Last() == STG_E_READFAULT);
      }
      const HRESULT first = run.CommitAll();
      const HRESULT second = run.CommitAll();
      hasFailed = disk.HasFailed();
      const std::string failed = hasFailed ? disk.Calls()[static_cast<std::size_t>(n) - 1] : "";
      const bool waited = failed == "Sync" || failed == "SyncFolder";
      EXPECT_EQ(SUCCEEDED(second), !hasFailed || (mode == FailingDisk::Mode::Once && !waited));
      EXPECT_TRUE(SUCCEEDED(first) || hasFailed);
      run.End();
      if (SUCCEEDED(second)) model::ExpectFileHolds(file, run.Model());
    }
  }
}

TEST_P(StorageDisk, NewFileIsRefusedWithoutATrace) {
  bool hasFailed = true;
  for (int n = 1; hasFailed; ++n) {
    FailingDisk disk(n, EIO);
    ScriptRun run(folder.Path("new"), GetParam());
    if (run.IsCreated()) run.End();
    EXPECT_EQ(run.IsCreated(), std::filesystem::remove(folder.Path("new"))) << "call " << n;
    hasFailed = disk.HasFailed();
  }
}

TEST_P(StorageDisk, CommitWaitsOnceForEachChange) {
  FailingDisk disk;
  ScriptRun run(folder.Path("scene"), GetParam());
  const auto count = [&](const char* name) {
    return std::count(disk.Calls().begin(), disk.Calls().end(), name);
  };
  run.Steps();
  EXPECT_EQ(0, count("Sync"));
  run.CommitAll();
  const auto writes = count("WriteAt");
  run.CommitAll();
  run.End();
  EXPECT_EQ(2, count("Sync"));
  EXPECT_EQ(1, count("SyncFolder"));
  EXPECT_EQ(writes, count("WriteAt"));
}

// Two saves at once: what one has moved away, or is moving, the other does not empty.
TEST_P(StorageDisk, AnotherSaveMovesTheFile) {
  const std::string file = folder.Put("scene", "old");
  const std::string backup = folder.Path("backup");
  const std::string other = folder.Path("other");
  FailingDisk disk;
  disk.before = [&](const std::string& call) {
    if (call == "Lock") std::filesystem::rename(file, backup);
  };
  EXPECT_FALSE(ScriptRun(file, GetParam()).IsCreated());
  disk.before = [&](const std::string& call) {
    if (call != "Rename") return;
    EXPECT_FALSE(ScriptRun(backup, GetParam()).IsCreated());
  };
  EXPECT_EQ(0, files::rename(backup.c_str(), other.c_str()));
  EXPECT_EQ("old", folder.Text("other"));
  disk.before = [&](const std::string& call) {
    if (call != "Lock" || std::filesystem::exists(backup)) return;
    std::filesystem::rename(other, backup);
    folder.Put("other", "new");
  };
  EXPECT_EQ(-1, files::rename(other.c_str(), file.c_str()));
  EXPECT_EQ("new", folder.Text("other"));
}

// The part of a failed write that reached the file is not seen again.
TEST_P(StorageDisk, ZerosAfterAFailedWrite) {
  for (int n = 1;; ++n) {
    FailingDisk disk(n, ENOSPC);
    IStorage* root = model::CreateFile(folder.Path("zeros"), GetParam());
    if (root == nullptr) continue;
    IStream* stream = nullptr;
    const std::string bytes(3 * Piece, 'x');
    ULONG done = 0;
    if (SUCCEEDED(root->CreateStream(L"stream", Exclusive, 0, 0, &stream)) &&
        FAILED(stream->Write(bytes.data(), 3 * Piece, &done))) {
      std::string read(3 * Piece, 'y');
      ULONG got = 0;
      EXPECT_EQ(S_OK, stream->SetSize({{3 * Piece, 0}}));
      EXPECT_EQ(S_OK, stream->Seek({{done, 0}}, STREAM_SEEK_SET, nullptr));
      EXPECT_EQ(S_OK, stream->Read(read.data(), 3 * Piece, &got));
      EXPECT_EQ(std::string(got, '\0'), read.substr(0, got)) << "call " << n;
    }
    if (stream != nullptr) stream->Release();
    root->Release();
    if (!disk.HasFailed()) break;
  }
}

/// Lets this process mount what only it sees, as its own superuser if it is nobody's.
bool Isolate() {
  const auto put = [](const char* file, const std::string& text) { std::ofstream(file) << text; };
  const std::string user = std::to_string(geteuid()), group = std::to_string(getegid());
  if (unshare(CLONE_NEWNS) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    put("/proc/self/setgroups", "deny");
    put("/proc/self/uid_map", "0 " + user + " 1");
    put("/proc/self/gid_map", "0 " + group + " 1");
  }
  return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// A real file system of a given size.
class FileSystem {
 public:
  FileSystem(const std::string& place, std::uint64_t size) : folder_(place) {
    static const bool isIsolated = Isolate();
    std::filesystem::create_directories(folder_);
    const std::string options = "size=" + std::to_string(size);
    isMounted = isIsolated && mount("tmpfs", folder_.c_str(), "tmpfs", 0, options.c_str()) == 0;
  }
  FileSystem(const FileSystem&) = delete;
  FileSystem& operator=(const FileSystem&) = delete;
  ~FileSystem() {
    if (isMounted) umount(folder_.c_str());
  }
  bool isMounted = false;

 private:
  const std::string folder_;
};

/// Takes all space that its file system has left.
void Fill(const std::string& fileName) {
  std::ofstream filler(fileName, std::ios::binary);
  const std::string page(4096, 'f');
  while (filler.write(page.data(), 4096).flush()) {
  }
}

// Space that a call needed is taken by then: that others fill the disk does no harm, neither after
// a commit, which gave space back. What the finished file takes is enough; a page less is told.
TEST_P(StorageDisk, ReallyFull) {
  const std::string place = folder.Path("full");
  if (!FileSystem(place, 1 << 16).isMounted) GTEST_SKIP() << "mounting is not permitted here";
  for (int calls = 0; calls < 100 && !HasFailure(); calls += 3) {
    SCOPED_TRACE(std::to_string(calls) + " calls");
    const FileSystem disk(place, 16 << 20);
    ScriptRun run(place + "/scene", GetParam());
    run.Steps(calls);
    if (calls % 2 == 0) run.CommitAll(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE);
    for (int i = 0; i < calls % 8; ++i) run.NewStream();
    Fill(place + "/filler");
    run.End();
    EXPECT_EQ(0, run.Failures());
    model::ExpectFileHolds(place + "/scene", run.Model());
  }
  std::uint64_t needed = 16 << 20;
  for (const std::uint64_t less : {0U, 0U, 4096U}) {
    const FileSystem disk(place, needed - less);
    ScriptRun run(place + "/scene", GetParam());
    run.Steps(14);
    EXPECT_EQ(less > 0 ? STG_E_MEDIUMFULL : S_OK, run.Last());
    run.End();
    model::ExpectFileHolds(place + "/scene", run.Model());
    needed = (std::filesystem::file_size(place + "/scene") + 4095) / 4096 * 4096;
  }
}

// Whichever call fails while a file is read, that is told; what is told as read is right.
TEST_P(StorageDisk, EveryCallFailsWhileReading) {
  const std::string path = folder.Path("read");
  model::RandomRun(path, 3, GetParam(), 100);
  const std::vector<ReadElement> whole = ReadFile(path);
  for (int n = 1;; ++n) {
    FailingDisk disk(n, EIO, FailingDisk::Mode::Once);
    const std::vector<ReadElement> read = ReadFile(path);
    for (std::size_t i = 0; i < read.size(); ++i) {
      const HRESULT refused = n < 3 ? STG_E_ACCESSDENIED : STG_E_READFAULT;
      const bool isRight =
          read[i].result == S_OK ? whole[i].bytes == read[i].bytes : read[i].result == refused;
      EXPECT_TRUE(isRight) << "call " << n << ", element " << i;
    }
    EXPECT_TRUE(read.size() == whole.size() || read[0].result != S_OK);
    if (!disk.HasFailed()) break;
  }
}

}  // namespace
