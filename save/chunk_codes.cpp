#include "save/chunk_codes.h"

#include <kelsave.h>

// Deliberate: the low four and the high four bits of a code play no part, so that an aligned group
// of sixteen codes shares one entry.
std::uint16_t GetChunkCode(std::uint16_t code) { return ChunkCodeTable[(code & 0x0FF0U) >> 4U]; }
