#pragma once

#include <cstring>

/// Two neighbouring doubles, added, multiplied and divided one by one: the results are those of
/// single doubles, in half the instructions.
using Pair = double __attribute__((vector_size(16)));

inline Pair LoadPair(const double* elements) {
  Pair pair;
  std::memcpy(&pair, elements, sizeof pair);
  return pair;
}

inline void StorePair(const Pair& pair, double* elements) {
  std::memcpy(elements, &pair, sizeof pair);
}
