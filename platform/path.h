#pragma once

#include <string>

/// The path that the file system understands: every backslash becomes a slash. A null pointer
/// gives an empty path.
std::string NativePath(const char* path);
