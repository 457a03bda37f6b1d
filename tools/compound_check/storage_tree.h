#pragma once

/// The tree that holds the entries of one storage.

#include <cstddef>
#include <vector>

#include "tools/compound_check/complaints.h"
#include "tools/compound_check/directory_entry.h"

namespace compound {

/// Checks that what hangs below entry `storage` is a red-black tree in the order of names, marks
/// its entries as reached and returns their indices in order.
std::vector<std::size_t> CheckTree(std::vector<RawEntry>& entries, std::size_t storage,
                                   Complaints& complaints);

}  // namespace compound
