#pragma once

/// Bytes and numbers as they stand in a compound file.

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

namespace compound {

/// The little-endian number of `width` bytes, 8 at most, at `offset`.
std::uint64_t Number(std::string_view bytes, std::size_t offset, int width);
std::uint32_t Word(std::string_view bytes, std::size_t offset);

std::uint64_t CeilDivide(std::uint64_t size, std::uint64_t unit);

/// `bytes` becomes `length` bytes of the file; false when some are missing, then they are zeros.
bool ReadBytes(std::istream& file, std::uint64_t offset, std::uint64_t length, std::string& bytes);

}  // namespace compound
