#include "tools/kelcalc/completion.h"

#include <gtest/gtest.h>

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
      {"30 ;sq", 2, {"sqrt"}},
      {"30 ;", 0, {"sin", "sqrt", "s", "tan"}},
      {"30 s", 1, {"side", "sum"}},
      {"2su", 0, {}},  // the run begins with a digit; where the name begins is not ours to say
      {"1 2 ~", 1, {"~", "~=", "~=="}},
      {"1 2 ~==", 3, {"~=="}},
      {"S", 1, {}},
      {"", 0, {}},
      {"1 ", 0, {}},
      {"\"text s", 0, {}},
      {"\"a\\\" s", 0, {}},
      {"\"text\" s", 1, {"side", "sum"}},
      {"[ a [ b ] s", 0, {}},
      {"[ a ] su", 2, {"sum"}},
      {"[ \" ] su", 2, {"sum"}},
  };
  for (const Case& expected : cases) {
    const kelcalc::Completion found = Complete(expected.line, known);
    EXPECT_EQ(found.candidates, expected.candidates) << expected.line;
    if (!expected.candidates.empty()) EXPECT_EQ(found.wordLength, expected.wordLength);
  }
}

}  // namespace
