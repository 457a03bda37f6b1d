#pragma once

/// The entries of the directory, each checked by itself.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compound_check/complaints.h"
#include "tools/compound_check/compound_checker.h"

namespace compound {

constexpr std::size_t EntrySize = 128;
constexpr std::uint32_t NoEntry = 0xFFFFFFFF;  // a link that leads nowhere
enum EntryColor : std::uint8_t { Red = 0, Black = 1 };

/// A directory entry as it stands in the file.
struct RawEntry {
  std::u16string name;
  std::uint8_t type = 0;
  std::uint8_t color = 0;
  std::uint32_t left = 0, right = 0, child = 0, start = 0;
  bool reached = false;  // by the walk through the trees
  Entry entry;
};

/// How complaints call an entry.
std::string EntryLabel(std::size_t index, const RawEntry& raw);

/// The entry that these EntrySize bytes hold.
RawEntry ParseEntry(std::string_view bytes);

/// Checks what can be said of entry `index` without looking at others.
void CheckEntry(std::size_t index, const RawEntry& raw, std::string_view bytes, bool isVersion3,
                Complaints& complaints);

}  // namespace compound
