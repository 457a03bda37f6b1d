#include "platform/path.h"

#include <algorithm>

std::string NativePath(const char* path) {
  std::string native = path == nullptr ? "" : path;
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}
