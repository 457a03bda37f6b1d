#include "tools/kelcalc/history.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/folder.h"

namespace {

using kelcalc::History;

class HistoryTest : public testing::Test {
 protected:
  std::string Stored() const { return scratch.Text("state/history"); }

  const Folder scratch;
  const std::string path = scratch.Path("state/history");
};

TEST_F(HistoryTest, SessionsAtOnceKeepEachOthersLines) {
  History first(path);
  History second(path);
  first.Add("1 2 +");
  second.Add("3");
  first.Add("#");
  EXPECT_EQ(Stored(), "1 2 +\n3\n#\n");
  EXPECT_EQ(History(path).Lines().size(), 3U);
}

TEST_F(HistoryTest, BlankAndRepeatedLinesAreLeftOut) {
  History history(path);
  for (const char* line : {"", "  \t", "1", "1", "2", "1"}) history.Add(line);
  EXPECT_EQ(Stored(), "1\n2\n1\n");
}

TEST_F(HistoryTest, OldLinesAreForgottenWhenItIsLoaded) {
  History history(path);
  for (std::size_t i = 0; i < History::MostLines + 5; ++i) history.Add(std::to_string(i));
  const History loaded(path);
  ASSERT_EQ(loaded.Lines().size(), History::MostLines);
  EXPECT_EQ(loaded.Lines().front(), "5");
  EXPECT_TRUE(Stored().starts_with("5\n6\n"));
}

TEST_F(HistoryTest, WithoutAPlaceItStaysInMemory) {
  History history("");
  history.Add("1");
  EXPECT_EQ(history.Lines().size(), 1U);
  std::filesystem::create_directories(path);  // a folder where the file should be
  History blocked(path);
  blocked.Add("1");
  EXPECT_EQ(blocked.Lines().size(), 1U);
}

}  // namespace
