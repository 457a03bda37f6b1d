/// The disk fails at one call or from one call on, for every call that there is.
#include <gtest/gtest.h>

#include <string>

#include "platform/storage.h"
#include "tests/failing_disk.h"
#include "tests/folder.h"

namespace {

constexpr FailingDisk::Mode Modes[] = {FailingDisk::Mode::Once, FailingDisk::Mode::FromThenOn};

HRESULT CreateFile(const std::string& path, IStorage** root) {
  void* object = nullptr;
  const HRESULT result =
      StgCreateStorageEx(std::wstring(path.begin(), path.end()).c_str(),
                         STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE, STGFMT_DOCFILE, 0,
                         nullptr, nullptr, IID_IStorage, &object);
  *root = static_cast<IStorage*>(object);
  return result;
}

TEST(StorageDisk, RefusedCreationLeavesTheOldFileAsItWas) {
  const Folder folder;
  for (const std::size_t size : {0U, 1U, 700U, 1536U, 100000U}) {
    const std::string old(size, 'o');
    for (const FailingDisk::Mode mode : Modes) {
      for (int n = 1;; ++n) {
        const std::string path = folder.Put("scene", old);
        FailingDisk disk(n, ENOSPC, mode);
        IStorage* root = nullptr;
        const bool created = SUCCEEDED(CreateFile(path, &root));
        if (created) {
          root->Release();
        } else {
          EXPECT_EQ(folder.Text("scene"), old) << "call " << n << " " << disk.Calls().back();
        }
        if (!disk.HasFailed()) break;
      }
    }
  }
}

}  // namespace
