#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "platform/window.h"
#include "save/kelsave.h"

namespace {

HelpSys FromWords(const std::uint32_t (&words)[6]) {
  HelpSys help;
  std::memcpy(static_cast<void*>(&help), words, sizeof help);
  return help;
}

// The words are compared as the host lays them out.
bool HasWords(const HelpSys& help, const std::uint32_t (&words)[6]) {
  return std::memcmp(&help, words, sizeof help) == 0;
}

TEST(HelpSys, AssignmentCopiesAllSixWords) {
  const HelpSys source = FromWords({0xFFFFFFFF, 2, 3, 4, 5, 6});
  HelpSys target = FromWords({0, 0, 0, 0, 0, 0});
  EXPECT_EQ(&(target = source), &target);
  EXPECT_TRUE(HasWords(target, {0xFFFFFFFF, 2, 3, 4, 5, 6}));
  const HelpSys& itself = target;
  target = itself;
  EXPECT_TRUE(HasWords(target, {0xFFFFFFFF, 2, 3, 4, 5, 6}));
}

TEST(HelpSys, AccessorsTouchOneWord) {
  HelpSys help = FromWords({0xFFFFFFFF, 2, 3, 4, 5, 6});
  const HelpSys other = FromWords({0, 77, 0, 0, 0, 0});
  EXPECT_EQ(help.getClickHelp(), -1);
  help.setHelpHWnd(HelpSys(other).getHelpHWnd());
  EXPECT_EQ(help.getHelpHWnd(), other.helpWindow);
  EXPECT_TRUE(HasWords(help, {0xFFFFFFFF, 77, 3, 4, 5, 6}));
}

}  // namespace
