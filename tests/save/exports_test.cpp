// The exports that keep nothing: the record of the help system and the table of codes.

#include <gtest/gtest.h>

#include <kelsave.h>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

// The six words as the host lays them out.
using Words = std::array<std::uint32_t, 6>;

Words WordsOf(const HelpSys& record) {
  Words words;
  std::memcpy(words.data(), static_cast<const void*>(&record), sizeof words);
  return words;
}

TEST(HelpSys, LayoutAndAccess) {
  const Words sourceWords = {0xFFFFFFFF, 77, 3, 4, 5, 6};
  HelpSys source;
  std::memcpy(static_cast<void*>(&source), sourceWords.data(), sizeof sourceWords);
  HelpSys target = {};
  EXPECT_EQ(&(target = source), &target);
  const HelpSys& itself = target;
  target = itself;
  EXPECT_EQ(target.getClickHelp(), -1);
  EXPECT_EQ(WordsOf(target), sourceWords);

  HelpSys other = {};
  other.setHelpHWnd(target.getHelpHWnd());
  EXPECT_EQ(WordsOf(other), (Words{0, 77, 0, 0, 0, 0}));
}

TEST(ChunkCodes, MiddleBitsChoose) {
  const int rows[][2] = {{0xF00F, 0}, {0xA01B, 0x1021}, {0x0800, 0x9188}, {0xFFFF, 0x1EF0}};
  for (const auto& [code, entry] : rows) {
    EXPECT_EQ(GetChunkCode(static_cast<std::uint16_t>(code)), entry) << code;
  }
}

}  // namespace
