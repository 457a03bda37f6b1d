#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

/// The names of variables, each kept once.
///
/// Every variable has a private name that stays readable after the variable was popped. Keeping
/// one copy of each distinct name, and never releasing it, gives that in memory that grows with
/// the number of different names and not with the length of the program; and pooled names are
/// equal exactly when their addresses are. One pool serves the whole process.

struct CaPooledName {
  const char* text;  // zero-terminated, good until the process ends; null for no name
};

/// The pooled copy of `name`.
CaPooledName PooledName(std::string_view name);

/// The pooled copy if there is one already, else no name.
CaPooledName FindPooledName(std::string_view name);

/// The number of a pooled name: 0 for the first, and so on.
inline std::uint32_t NumberOf(CaPooledName name) {
  std::uint32_t number = 0;
  std::memcpy(&number, name.text - sizeof number, sizeof number);
  return number;
}
