#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "platform/compound_format.h"

struct CompoundEntry;

/// The children of a storage in the format's order. May throw std::bad_alloc.
std::vector<CompoundEntry*> SortedChildren(const CompoundEntry& storage);

/// One node of a search tree over positions 0 to count - 1. `left` and `right` are positions, or
/// NoStream.
struct TreeNode {
  std::uint32_t position;
  std::uint32_t left;
  std::uint32_t right;
  CompoundColor color;
};

/// The root of the tree over positions [begin, end): its middle.
constexpr std::uint32_t TreeRoot(std::uint32_t begin, std::uint32_t end) {
  return begin == end ? NoStream : begin + (end - begin) / 2;
}

/// Visits, in order of position, the nodes of the red-black tree that halving makes. All levels
/// but the deepest are full, so the tree is valid with black nodes everywhere and, where the
/// deepest level is not full, red ones there. `blackLevels` counts the levels that are black.
template <class Visit>
void VisitTree(std::uint32_t begin, std::uint32_t end, unsigned blackLevels, const Visit& visit) {
  if (begin == end) return;
  const std::uint32_t middle = TreeRoot(begin, end);
  const unsigned below = blackLevels == 0 ? 0 : blackLevels - 1;
  VisitTree(begin, middle, below, visit);
  visit(TreeNode{middle, TreeRoot(begin, middle), TreeRoot(middle + 1, end),
                 blackLevels == 0 ? ColorRed : ColorBlack});
  VisitTree(middle + 1, end, below, visit);
}

/// How many levels of a tree of `count` nodes are full.
constexpr unsigned FullLevels(std::uint32_t count) {
  return static_cast<unsigned>(std::bit_width(std::uint64_t{count} + 1)) - 1;
}
