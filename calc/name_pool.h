#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "calc/packed_name.h"

/// The names of variables, each kept once.
///
/// Every variable has a private name that stays readable after the variable was popped. Keeping
/// one copy of each distinct name, and never releasing it, gives that in memory that grows with
/// the number of different names and not with the length of the program; and pooled names are
/// equal exactly when their addresses are. One pool serves the whole process.

struct CaPooledName {
  const char* text;  // zero-terminated, good until the process ends; null for no name
};

/// The pooled copy of `name`, which is added when there is none yet.
CaPooledName PoolName(std::string_view name);

/// The names of up to eight characters that were used a moment ago. They are found by one
/// comparison of numbers instead of a look into the pool.
class CaRecentNames {
 public:
  CaPooledName Find(std::string_view name) {
    const std::uint64_t packed = PackedName(name);
    Recent& recent = recent_[SlotOf(packed)];
    if (recent.packed != packed || packed == 0) recent = {packed, PoolName(name)};
    return recent.name;
  }

 private:
  struct Recent {
    std::uint64_t packed;  // 0 for a long name or none
    CaPooledName name;
  };

  static constexpr unsigned Bits = 8;

  /// The upper bits of the product depend on every character.
  static std::size_t SlotOf(std::uint64_t packed) {
    return static_cast<std::size_t>(packed * 0x9E3779B97F4A7C15U >> (64 - Bits));
  }

  std::array<Recent, std::size_t{1} << Bits> recent_{};
};
extern CaRecentNames RecentNames;

/// The same, quick for a short name that was used a moment ago.
inline CaPooledName PooledName(std::string_view name) { return RecentNames.Find(name); }

/// The pooled copy if there is one already, else no name.
CaPooledName FindPooledName(std::string_view name);

/// The number of a pooled name: 0 for the first, and so on.
inline std::uint32_t NumberOf(CaPooledName name) {
  std::uint32_t number = 0;
  std::memcpy(&number, name.text - sizeof number, sizeof number);
  return number;
}
