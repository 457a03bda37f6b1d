/// Random sequences of operations against the model, and the shapes that a random run seldom
/// meets. With KEL_KEEP_FILES=FOLDER each file NAME stays there, unpacked in NAME.d beside it,
/// for storage_reader_test.sh, which gives them to readers from elsewhere.

#include "tests/platform/storage_model.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "tests/folder.h"

namespace {

/// A file that a test makes; kept with the plain copy of its contents when somebody asked.
class File {
 public:
  explicit File(const std::string& name)
      : keep(std::getenv("KEL_KEEP_FILES")),
        path(keep ? std::string(keep) + "/" + name : folder.Path(name)) {}

  void ExpectHolds(const model::Node& root) const {
    model::ExpectFileHolds(path, root);
    model::ExpectReads(path, root);
    if (keep) model::Unpack(root, path + ".d");
  }

  const Folder folder;
  const char* keep;
  const std::string path;
};

class StorageModel : public testing::TestWithParam<ULONG> {
 protected:
  static std::string Name(std::string stem, std::uint32_t number = 0) {
    stem += std::to_string(number) += "_";
    return stem += std::to_string(GetParam()) += ".cfb";
  }
};

INSTANTIATE_TEST_SUITE_P(SectorSizes, StorageModel, testing::Values(512, 4096));

TEST_P(StorageModel, RandomRuns) {
  for (unsigned seed = 1; seed <= 24 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const File file(Name("run", seed));
    file.ExpectHolds(*model::RandomRun(file.path, seed, GetParam(), 100 * static_cast<int>(seed)));
  }
}

// Many small streams in one storage, more than 109 FAT sectors (with 512-byte sectors), and
// storages within storages.
TEST_P(StorageModel, WideTallAndDeep) {
  const File file(Name("shapes"));
  model::Node root{true};
  IStorage* storage = model::CreateFile(file.path, GetParam());
  ASSERT_NE(nullptr, storage);
  for (unsigned i = 0; i < 300; ++i) {
    const auto name = model::Numbered(u"Stream ", i * 7919 % 1000);
    EXPECT_EQ(S_OK, model::Put(*storage, root, name, std::string(i, 's')));
  }
  EXPECT_EQ(S_OK, model::Put(*storage, root, u"tall", std::string(8 << 20, 't')));
  std::vector<IStorage*> storages{storage};
  model::Node* node = &root;
  for (unsigned depth = 0; depth < 40; ++depth) {
    IStorage* inner = nullptr;
    ASSERT_EQ(S_OK, storages.back()->CreateStorage(L"in", STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0,
                                                   0, &inner));
    node = (node->children[u"in"] = std::make_shared<model::Node>()).get();
    node->isStorage = true;
    storages.push_back(inner);
    EXPECT_EQ(S_OK, model::Put(*inner, *node, u"d", std::string(depth, 'd')));
  }
  for (; !storages.empty(); storages.pop_back()) EXPECT_EQ(0U, storages.back()->Release());
  file.ExpectHolds(root);
}

}  // namespace
