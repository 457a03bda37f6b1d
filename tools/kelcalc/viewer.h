#pragma once

#include <string>

namespace kelcalc {

/// Makes a new folder that this user alone can read, among the temporary ones. Empty on failure.
std::string MakePrivateFolder();

/// Hands the file at `path` to whatever shows such files on this desktop, and does not wait. False
/// without a desktop or without anything that opens files there.
bool OpenViewer(const std::string& path);

}  // namespace kelcalc
