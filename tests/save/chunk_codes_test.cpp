#include <gtest/gtest.h>

#include <kelsave.h>
#include <cstdint>

namespace {

TEST(ChunkCodes, MiddleBitsChoose) {
  struct {
    std::uint16_t code;
    std::uint16_t entry;
  } const rows[] = {
      {0x0000, 0x0000}, {0x000F, 0x0000}, {0xF00F, 0x0000}, {0x0010, 0x1021},
      {0xA01B, 0x1021}, {0x0800, 0x9188}, {0x0FF0, 0x1EF0}, {0xFFFF, 0x1EF0},
  };
  for (const auto& row : rows) EXPECT_EQ(GetChunkCode(row.code), row.entry) << row.code;
}

}  // namespace
