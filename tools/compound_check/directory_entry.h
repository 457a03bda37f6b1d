#pragma once

/// The entries of the directory, each checked by itself.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tools/compound_check/complaints.h"
#include "tools/compound_check/compound_checker.h"

namespace compound {

constexpr std::size_t EntrySize = 128;
constexpr std::uint32_t NoEntry = 0xFFFFFFFF;  // a link that leads nowhere
enum EntryColor : std::uint8_t { Red = 0, Black = 1 };

/// A directory entry as it stands in the file.
struct RawEntry {
  std::uint64_t place = 0;  // offset in the file
  std::u16string name;
  std::uint8_t type = 0;
  std::uint8_t color = 0;
  std::uint32_t left = 0, right = 0, child = 0, start = 0;
  bool reached = false;  // by the walk through the trees
  Entry entry;

  bool HoldsEntries() const { return type == Storage || type == Root; }
};

/// The entry that these EntrySize bytes hold. In version 3 sizes have 32 bits.
RawEntry ParseEntry(std::string_view bytes, bool isVersion3);

/// Checks what can be said of an entry, which complaints call `label`, without looking at others.
void CheckEntry(const RawEntry& raw, const std::string& label, std::string_view bytes,
                Complaints& complaints);

/// Whether the bytes are those of an unused entry.
bool IsEmptyEntry(std::string_view bytes);

}  // namespace compound
