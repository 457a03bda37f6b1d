#pragma once

#include <cstring>

/// Two neighbouring doubles, added, multiplied and divided one by one: the results are those of
/// single doubles, in half the instructions.
using CyPair = double __attribute__((vector_size(16)));

inline CyPair CyLoadPair(const double* elements) noexcept {
  CyPair pair;
  std::memcpy(&pair, elements, sizeof pair);
  return pair;
}

inline void CyStorePair(const CyPair& pair, double* elements) noexcept {
  std::memcpy(elements, &pair, sizeof pair);
}
