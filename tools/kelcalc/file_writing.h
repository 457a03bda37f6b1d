#pragma once

#include <string>

namespace kelcalc {

/// Writes `text` to the file at `path`. A file that was there is replaced whole or stays as it
/// was, with the permissions that it had. Returns an empty text, or why it failed.
std::string WriteFile(const std::string& path, const std::string& text);

}  // namespace kelcalc
