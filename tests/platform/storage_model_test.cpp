/// Random sequences of operations against the model, and the shapes that a random run seldom
/// meets. With KEL_KEEP_FILES=FOLDER each file NAME stays there, unpacked in NAME.d beside it,
/// for storage_reader_test.sh, which gives them to readers from elsewhere.

#include "tests/platform/storage_model.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "save/kelsave_files.h"
#include "tests/folder.h"

namespace {

class StorageModel : public testing::TestWithParam<ULONG> {
 protected:
  std::string Path(const std::string& stem) const {
    return (keep ? keep : folder.Root()) + "/" + stem + "_" + std::to_string(GetParam()) + ".cfb";
  }
  void ExpectHolds(const std::string& path, const model::Node& root) const {
    model::ExpectFileHolds(path, root);
    model::ExpectReads(path, root);
    if (keep) model::Unpack(root, path + ".d");
  }

  const Folder folder;
  const char* const keep = std::getenv("KEL_KEEP_FILES");
};

INSTANTIATE_TEST_SUITE_P(SectorSizes, StorageModel, testing::Values(512, 4096));

TEST_P(StorageModel, RandomRuns) {
  for (unsigned seed = 1; seed <= 24 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::string path = Path("run" + std::to_string(seed));
    ExpectHolds(path, *model::RandomRun(path, seed, GetParam(), 100 * static_cast<int>(seed)));
  }
}

// Many small streams in one storage, more than 109 FAT sectors (with 512-byte sectors), and
// storages within storages.
TEST_P(StorageModel, WideTallAndDeep) {
  model::Node root{true};
  std::vector<kel::Storage> storages;
  storages.emplace_back(model::CreateFile(Path("shapes"), GetParam()));
  ASSERT_NE(nullptr, storages[0]);
  for (unsigned i = 0; i < 300; ++i) {
    const auto name = L"Stream " + std::to_wstring(i * 7919 % 1000);
    EXPECT_EQ(S_OK, model::Put(*storages[0], root, name, std::string(i, 's')));
  }
  EXPECT_EQ(S_OK, model::Put(*storages[0], root, L"tall", std::string(8 << 20, 't')));
  model::Node* node = &root;
  for (unsigned depth = 0; depth < 40; ++depth) {
    storages.push_back(kel::CreateStorage(*storages.back(), L"in"));
    node = (node->children[u"in"] = std::make_shared<model::Node>(model::Node{true})).get();
    EXPECT_EQ(S_OK, model::Put(*storages.back(), *node, L"d", std::string(depth, 'd')));
  }
  storages.clear();
  ExpectHolds(Path("shapes"), root);
}

}  // namespace
