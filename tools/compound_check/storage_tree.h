#pragma once

/// The tree that holds the entries of one storage.

#include <cstddef>
#include <string>
#include <vector>

#include "tools/compound_check/complaints.h"
#include "tools/compound_check/directory_entry.h"

namespace compound {

/// The entries in the tree of entry `storage`, which complaints call `label`, from left to right;
/// they are marked as reached. A link that leads nowhere, or to an entry that was reached before,
/// is complained of and not followed.
std::vector<std::size_t> WalkTree(std::vector<RawEntry>& entries, std::size_t storage,
                                  const std::string& label, Complaints& complaints);

/// Checks that this is a red-black tree in the order of names. Entries of one name, of which the
/// second can never be opened, are marked as damaged.
void CheckTree(std::vector<RawEntry>& entries, std::size_t storage,
               const std::vector<std::size_t>& members, const std::string& label,
               Complaints& complaints);

}  // namespace compound
