#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "calc/packed_name.h"

/// Finds an entry of a table by its name with one probe, where a search from the front would find
/// the same. The layout is worked out by the compiler; names have at most eight characters.
template <typename Entry, std::size_t Count>
class CaNameIndex {
 public:
  explicit constexpr CaNameIndex(const Entry (&table)[Count]) : table_(table) {
    while (!Place()) multiplier_ = multiplier_ * 6364136223846793005U + 1442695040888963407U;
  }

  const Entry* Find(std::string_view name) const {
    const std::uint64_t key = PackedName(name);
    const Slot& slot = slots_[SlotOf(key)];
    return key != 0 && slot.key == key ? table_ + slot.entry : nullptr;
  }

 private:
  struct Slot {
    std::uint64_t key = 0;  // 0 for an empty slot
    std::size_t entry = 0;
  };

  static constexpr unsigned Bits = Count <= 8 ? 5 : 8;

  constexpr std::size_t SlotOf(std::uint64_t key) const {
    return static_cast<std::size_t>(key * multiplier_ >> (64 - Bits));
  }

  /// False when two names want the same slot.
  constexpr bool Place() {
    slots_ = {};
    for (std::size_t i = 0; i + 1 < Count; ++i) {
      const std::uint64_t key = PackedName(table_[i].name);
      Slot& slot = slots_[SlotOf(key)];
      if (slot.key != 0) return false;
      slot = {key, i};
    }
    return true;
  }

  const Entry* table_;
  std::uint64_t multiplier_ = 0x9E3779B97F4A7C15U;
  std::array<Slot, std::size_t{1} << Bits> slots_{};
};
