#include "tools/kelcalc/history.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/folder.h"

namespace {

using kelcalc::History;

TEST(History, SessionsAtOnceKeepEachOthersLines) {
  const Folder scratch;
  const std::string path = scratch.Path("state/history");
  History first(path);
  History second(path);
  for (const char* line : {"", "1 2 +", "  \t", "1 2 +"}) first.Add(line);
  second.Add("3");
  first.Add("#");
  EXPECT_EQ(scratch.Text("state/history"), "1 2 +\n3\n#\n");
  for (std::size_t i = 3; i < History::MostLines + 5; ++i) first.Add(std::to_string(i));
  const History loaded(path);  // without the oldest ones
  ASSERT_EQ(loaded.Lines().size(), History::MostLines);
  EXPECT_EQ(loaded.Lines().front(), "5");
  EXPECT_TRUE(scratch.Text("state/history").starts_with("5\n6\n"));
}

}  // namespace
