#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "platform/window.h"
#include "save/kelsave.h"

namespace {

// The six words as the host lays them out.
using Words = std::array<std::uint32_t, 6>;

HelpSys FromWords(const Words& words) {
  HelpSys help;
  std::memcpy(static_cast<void*>(&help), words.data(), sizeof help);
  return help;
}

Words WordsOf(const HelpSys& help) {
  Words words;
  const auto* bytes = reinterpret_cast<const unsigned char*>(&help);
  std::copy(bytes, bytes + sizeof help, reinterpret_cast<unsigned char*>(words.data()));
  return words;
}

TEST(HelpSys, AssignmentCopiesAllSixWords) {
  const HelpSys source = FromWords({0xFFFFFFFF, 2, 3, 4, 5, 6});
  HelpSys target = FromWords({0, 0, 0, 0, 0, 0});
  EXPECT_EQ(&(target = source), &target);
  EXPECT_EQ(WordsOf(target), (Words{0xFFFFFFFF, 2, 3, 4, 5, 6}));
  const HelpSys& itself = target;
  target = itself;
  EXPECT_EQ(WordsOf(target), (Words{0xFFFFFFFF, 2, 3, 4, 5, 6}));
}

TEST(HelpSys, AccessorsTouchOneWord) {
  HelpSys help = FromWords({0xFFFFFFFF, 2, 3, 4, 5, 6});
  const HelpSys other = FromWords({0, 77, 0, 0, 0, 0});
  EXPECT_EQ(help.getClickHelp(), -1);
  help.setHelpHWnd(HelpSys(other).getHelpHWnd());
  EXPECT_EQ(help.getHelpHWnd(), other.helpWindow);
  EXPECT_EQ(WordsOf(help), (Words{0xFFFFFFFF, 77, 3, 4, 5, 6}));
}

}  // namespace
