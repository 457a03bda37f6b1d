/// The disk fails at one call or from one call on, for every call that there is, and a disk is
/// really full. What is demanded each time:
/// - A creation that is refused leaves an old file as it was, and no new one. One that is not
/// leaves
///   no file that looks whole, should it be killed.
/// - A failed call has changed nothing but for the bytes that it reports as written, and those that
///   it was to write over.
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
#include "save/kelsave_files.h"
#include "tests/failing_disk.h"
#include "tests/folder.h"
#include "tests/platform/read_storage.h"
#include "tests/platform/storage_model.h"

namespace {

using model::Piece;
constexpr int Steps = 80;

/// Opens a new file; null when that fails. Files in memory count as large early.
IStorage* Create(const std::string& file, ULONG sectorSize) {
  IStorage* root = nullptr;
  const CompoundParameters parameters{sectorSize, 4096, 0x7FFFFF00, 2 * Piece};
  static_cast<void>(CreateCompoundFile(file.c_str(), L"x", parameters, &root));
  return root;
}

class StorageDisk : public testing::TestWithParam<ULONG> {
 protected:
  const Folder folder;
};

INSTANTIATE_TEST_SUITE_P(SectorSizes, StorageDisk, testing::Values(512, 4096));

TEST_P(StorageDisk, EveryCallFails) {
  const bool isLarge = GetParam() == 4096;
  for (unsigned seed = 1; seed <= 12; ++seed) {
    const bool once = seed % 4 != 0;
    bool hasFailed = true;
    for (int n = 1; hasFailed && !HasFailure(); ++n) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", call " + std::to_string(n));
      const std::string file = folder.Put("scene", std::string(n % 2 == 0 ? 700 : 100000, 'o'));
      if (seed == 2) std::filesystem::remove(file);
      const std::string before = folder.List();
      FailingDisk disk(n, isLarge ? ENOSPC : EIO,
                       once ? FailingDisk::Mode::Once : FailingDisk::Mode::FromThenOn);
      IStorage* root = Create(file, GetParam());
      if (root == nullptr) {
        EXPECT_EQ(before, folder.List());
        continue;
      }
      EXPECT_TRUE(disk.HasFailed() || folder.Text("scene")[0] == '\0');
      model::Faults faults{once};
      HRESULT first = S_OK;
      HRESULT second = S_OK;
      const auto commit = [&](IStorage& open, const model::Node& node) {
        first = open.Commit(STGC_DEFAULT);
        if (SUCCEEDED(first)) model::ExpectFileHolds(file, node);
        second = open.Commit(STGC_DEFAULT);
        hasFailed = disk.HasFailed();
      };
      const auto model = model::RandomRun(root, file, seed, Steps, &faults, commit);
      for (const HRESULT fault : faults.results) {
        EXPECT_NE(isLarge ? STG_E_WRITEFAULT : STG_E_MEDIUMFULL, fault);
      }
      const std::string failed = hasFailed ? disk.Calls()[static_cast<std::size_t>(n) - 1] : "";
      const bool waited = failed == "Sync" || failed == "SyncFolder";
      EXPECT_EQ(SUCCEEDED(second), !hasFailed || (once && !waited));
      EXPECT_TRUE(SUCCEEDED(first) || hasFailed);
      if (SUCCEEDED(second)) model::ExpectFileHolds(file, *model);
    }
  }
}

TEST_P(StorageDisk, CommitWaitsOnceForEachChange) {
  FailingDisk disk;
  const auto count = [&](const char* name) {
    return std::count(disk.Calls().begin(), disk.Calls().end(), name);
  };
  const std::string file = folder.Path("scene");
  std::ptrdiff_t writes = 0;
  model::RandomRun(Create(file, GetParam()), file, 1, Steps, nullptr,
                   [&](IStorage& root, const model::Node&) {
                     EXPECT_EQ(0, count("Sync"));
                     EXPECT_EQ(S_OK, root.Commit(STGC_DEFAULT));
                     writes = count("WriteAt");
                     EXPECT_EQ(S_OK, root.Commit(STGC_DEFAULT));
                   });
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
  EXPECT_EQ(nullptr, Create(file, GetParam()));
  disk.before = [&](const std::string& call) {
    if (call == "Rename") {
      EXPECT_EQ(nullptr, Create(backup, GetParam()));
    }
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

// What another process saved into a new file before it was locked stays, whatever fails; and so
// does a file in use, also when nothing is left to look at it with.
TEST_P(StorageDisk, AnotherSaveComesFirst) {
  const std::string file = folder.Path("scene");
  for (int n = 1, hasFailed = 1; hasFailed != 0; ++n) {
    std::filesystem::remove(file);
    FailingDisk disk(n, EMFILE);
    std::string theirs;
    disk.before = [&](const std::string& call) {
      if (call == "Lock" && theirs.empty()) folder.Put("scene", theirs = "theirs");
    };
    const kel::Storage root(Create(file, GetParam()));
    EXPECT_TRUE(root != nullptr || folder.Text("scene") == theirs);
    const bool isRemoved = root != nullptr && files::remove(file.c_str()) == 0;
    hasFailed = disk.HasFailed() ? 1 : 0;
    EXPECT_TRUE(!isRemoved || disk.Calls()[static_cast<std::size_t>(n) - 1] == "Lock") << n;
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

/// A real file system of this size, in place of the one before.
bool Mount(const std::string& place, std::uint64_t size) {
  static const bool isIsolated = Isolate();
  umount(place.c_str());
  std::filesystem::create_directories(place);
  const std::string options = "size=" + std::to_string(size);
  return isIsolated && mount("tmpfs", place.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

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
  if (!Mount(place, 1 << 16)) GTEST_SKIP() << "mounting is not permitted here";
  const std::string file = place + "/scene";
  for (unsigned steps = 0; steps < 100 && !HasFailure(); steps += 3) {
    SCOPED_TRACE(std::to_string(steps) + " steps");
    EXPECT_TRUE(Mount(place, 16 << 20));
    const auto model = model::RandomRun(
        Create(file, GetParam()), file, steps, static_cast<int>(steps), nullptr,
        [&](IStorage& root, model::Node& node) {
          if (steps % 2 == 0) root.Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE);
          for (unsigned i = 0; i < steps % 8; ++i) {
            EXPECT_EQ(S_OK, model::Put(root, node, L"new" + std::to_wstring(i), ""));
          }
          Fill(place + "/filler");
        });
    model::ExpectFileHolds(file, *model);
  }
  std::uint64_t needed = 16 << 20;
  for (const std::uint64_t less : {0U, 0U, 4096U}) {
    EXPECT_TRUE(Mount(place, needed - less));
    model::Node model{true};
    IStorage* root = Create(file, GetParam());
    HRESULT result = S_OK;
    for (unsigned i = 0; i < 60 && result == S_OK; ++i) {
      const std::string bytes(i == 0 ? 70000 : 3000, 's');
      result = model::Put(*root, model, L"s" + std::to_wstring(i), bytes);
    }
    root->Release();
    EXPECT_EQ(less > 0 ? STG_E_MEDIUMFULL : S_OK, result);
    model::ExpectFileHolds(file, model);
    needed = (std::filesystem::file_size(file) + 4095) / 4096 * 4096;
  }
  umount(place.c_str());
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

TEST(StorageDiskSize, BeyondFourGigabytes) {
  const Folder folder;
  const std::string file = folder.Path("large");
  constexpr std::uint64_t Size = 5ULL << 30;
  FailingDisk disk;
  disk.isSparse = true;
  {
    const kel::Storage root(Create(file, 4096));
    const kel::Stream stream = kel::CreateStream(*root, L"large");
    const HRESULT grown = stream->SetSize({.QuadPart = Size});
    if (grown == STG_E_MEDIUMFULL) GTEST_SKIP() << "no files of this size, or none with holes";
    ASSERT_EQ(S_OK, grown);
    EXPECT_EQ(S_OK, stream->Seek({.QuadPart = -3}, STREAM_SEEK_END, nullptr));
    kel::WriteAll(*stream, "end", 3);
  }
  const kel::Storage root = kel::OpenScene(file);
  const kel::Stream stream = kel::OpenStream(*root, L"large");
  EXPECT_EQ(S_OK, stream->Seek({.QuadPart = -3}, STREAM_SEEK_END, nullptr));
  EXPECT_EQ("end", kel::ReadText(*stream));
}

}  // namespace
