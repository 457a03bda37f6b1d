#include <gtest/gtest.h>

#include <kelsave.h>

namespace {

TEST(ChunkCodes, MiddleBitsChoose) {
  const int rows[][2] = {{0xF00F, 0}, {0xA01B, 0x1021}, {0x0800, 0x9188}, {0xFFFF, 0x1EF0}};
  for (const auto& [code, entry] : rows) {
    EXPECT_EQ(GetChunkCode(static_cast<std::uint16_t>(code)), entry) << code;
  }
}

}  // namespace
