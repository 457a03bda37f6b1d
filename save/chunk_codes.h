#pragma once

#include <array>
#include <cstdint>

/// The 16-bit remainder of the byte `index`, followed by sixteen zero bits, divided by the
/// polynomial x^16 + x^12 + x^5 + 1 over GF(2) (the one of ITU-T V.41, highest bit first).
constexpr std::uint16_t ChunkCode(unsigned index) {
  unsigned remainder = index << 8U;
  for (int bit = 0; bit < 8; ++bit) {
    remainder = (remainder & 0x8000U) != 0 ? (remainder << 1U) ^ 0x11021U : remainder << 1U;
  }
  return static_cast<std::uint16_t>(remainder);
}

/// What GetChunkCode chooses from. The remainders are all different, and differ in several bits,
/// so a code that is damaged or mixed up does not turn into its neighbour's. Files of hosts hold
/// them: they never change.
constexpr std::array<std::uint16_t, 256> ChunkCodeTable = [] {
  std::array<std::uint16_t, 256> table{};
  for (unsigned index = 0; index < table.size(); ++index) table[index] = ChunkCode(index);
  return table;
}();

static_assert(ChunkCodeTable[0] == 0x0000 && ChunkCodeTable[1] == 0x1021);
static_assert(ChunkCodeTable[128] == 0x9188 && ChunkCodeTable[255] == 0x1EF0);
static_assert([] {
  for (unsigned i = 0; i < 256; ++i) {
    for (unsigned j = 0; j < i; ++j) {
      if (ChunkCodeTable[i] == ChunkCodeTable[j]) return false;
    }
  }
  return true;
}());
