#include <gtest/gtest.h>

#include <kelsave.h>
#include <algorithm>
#include <array>
#include <cstdint>

namespace {

// The six words as the host lays them out.
using Words = std::array<std::uint32_t, 6>;

void Copy(const void* from, void* to) {
  const auto* bytes = static_cast<const unsigned char*>(from);
  std::copy(bytes, bytes + sizeof(Words), static_cast<unsigned char*>(to));
}

TEST(HelpSys, LayoutAndAccess) {
  const Words sourceWords = {0xFFFFFFFF, 77, 3, 4, 5, 6};
  HelpSys source;
  Copy(sourceWords.data(), &source);
  HelpSys target = {};
  EXPECT_EQ(&(target = source), &target);
  const HelpSys& itself = target;
  target = itself;
  EXPECT_EQ(target.getClickHelp(), -1);
  Words words;
  Copy(&target, words.data());
  EXPECT_EQ(words, sourceWords);

  HelpSys other = {};
  other.setHelpHWnd(target.getHelpHWnd());
  Copy(&other, words.data());
  EXPECT_EQ(words, (Words{0, 77, 0, 0, 0, 0}));
}

}  // namespace
