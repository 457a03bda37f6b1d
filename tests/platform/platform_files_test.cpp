#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/files.h"
#include "tests/folder.h"

namespace {

mode_t ModeOf(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

// What is asked is the file itself, not whether this process may; only write permission changes.
TEST(PlatformFiles, AccessAndChmod) {
  const Folder folder;
  struct {
    mode_t before;
    int access, may;
    int mode;
    mode_t after;
  } const rows[] = {{0644, 2, 0, 0x180, 0644},  {0444, 4, 0, 0x180, 0644}, {0444, 6, -1, 0, 0444},
                    {0466, 2, -1, 0x100, 0444}, {0200, 6, 0, 0x80, 0200},  {0551, 0, 0, 0x80, 0751},
                    {04755, 0, 0, 0, 04555}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const std::string path = folder.Put("file", "x", row.before);
    EXPECT_EQ(files::_access(path.c_str(), row.access), row.may);
    EXPECT_EQ(files::_chmod(path.c_str(), row.mode), 0);
    EXPECT_EQ(ModeOf(path), row.after);
    chmod(path.c_str(), 0644);
  }
  EXPECT_EQ(files::_chmod(folder.Root().c_str(), 0x100), 0);
  EXPECT_EQ(ModeOf(folder.Root()), 0700U);
  chmod(folder.Root().c_str(), 0555);
  EXPECT_EQ(files::_access(folder.Root().c_str(), 2), 0);
  chmod(folder.Root().c_str(), 0755);
  EXPECT_EQ(files::_access((folder.Root() + "\\file").c_str(), 0), 0);
  EXPECT_EQ(files::_access((folder.Root() + "\\none").c_str(), 0), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(files::_chmod(folder.Path("none").c_str(), 0x100), -1);
  EXPECT_EQ(files::_access(std::string(5000, '/').c_str(), 0), -1) << "no cut path is used";
  EXPECT_EQ(files::_access(nullptr, 0), -1);
}

TEST(PlatformFiles, RenameReplacesNothing) {
  const Folder folder;
  const std::string from = folder.Put("from", "scene", 0444);
  folder.Put("taken", "other");
  EXPECT_EQ(files::rename(from.c_str(), (folder.Root() + "\\taken").c_str()), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(files::rename(from.c_str(), (folder.Path("none/to")).c_str()), -1);
  EXPECT_EQ(folder.Text("taken") + folder.Text("from"), "otherscene");
  EXPECT_EQ(files::rename(from.c_str(), (folder.Root() + "\\to").c_str()), 0);
  EXPECT_EQ(folder.List(), "taken=other to=scene!");
}

}  // namespace
