#include "tools/kelcalc/completion.h"

#include <gtest/gtest.h>

#include "tools/kelcalc/open_text.h"

namespace {

using kelcalc::Complete;
using kelcalc::KnownNames;

struct Case {
  const char* line;
  std::size_t wordLength;
  std::vector<std::string> candidates;
};

TEST(Completion, OffersWhatCanStandAtTheCursor) {
  const KnownNames known{
      {"~", "~=", "~==", "-"}, {"sin", "sqrt", "s", "tan"}, {"side", "sum", "t"}};
  const Case cases[] = {
      {"30 ;s", 1, {"sin", "sqrt", "s"}},
      {"30 ;", 0, {"sin", "sqrt", "s", "tan"}},
      {"30 s", 1, {"side", "sum"}},
      {"2su", 0, {}},  // the run begins with a digit; where the name begins is not ours to say
      {"1 2 ~", 1, {"~", "~=", "~=="}},
      {"S", 1, {}},
      {":sa", 3, {":save"}},
      {":help quat", 4, {"quaternion"}},
      {":side", 4, {"side"}},
  };
  for (const Case& expected : cases) {
    const kelcalc::Completion found = Complete(expected.line, known);
    EXPECT_EQ(found.candidates, expected.candidates) << expected.line;
    if (found.candidates.empty()) continue;
    EXPECT_EQ(found.wordLength, expected.wordLength) << expected.line;
  }
}

TEST(OpenText, KnowsWhatTheEndOfALineLeavesOpen) {
  const std::string longest(1024, 'x');
  const struct {
    std::string text;
    char opening;
  } cases[] = {
      {"1 2 +", 0},     {"\"a", '"'},         {"\"a\"", 0},       {"\"a\\\"", '"'},
      {"\"a\\\\\"", 0}, {"[ a [ b ]", '['},   {"[ a [ b ] ]", 0}, {"[ \\] ", '['},
      {"[ \" ]", 0},    {"\"[\"", 0},         {"\"[", '"'},       {"\"" + longest, 0},
      {"\"x\n", '"'},   {"[ \"\n ] \"", '"'},
  };
  for (const auto& expected : cases) {
    kelcalc::OpenText text;
    text.Take(expected.text);
    EXPECT_EQ(text.Opening(), expected.opening) << expected.text;
  }
}

}  // namespace
