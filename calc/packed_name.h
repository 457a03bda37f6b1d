#pragma once

#include <cstdint>
#include <string_view>

/// The characters of `name`, of which there are one to eight, as one number that no other name
/// has; 0 for the other names. Names hold no NUL.
constexpr std::uint64_t PackedName(std::string_view name) {
  if (name.size() > 8) return 0;
  std::uint64_t packed = 0;
  for (const char c : name) packed = packed << 8 | static_cast<unsigned char>(c);
  return packed;
}
