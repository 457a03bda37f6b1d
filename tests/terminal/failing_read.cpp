// Loaded before a program, it makes reading one file fail in its middle: of the file whose path the
// environment gives as FAILING_READ, the first read gets at most eight bytes, the next one EIO.

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" __attribute__((visibility("default"))) ssize_t read(int descriptor, void* block,
                                                               size_t size) {
  using Read = ssize_t (*)(int, void*, size_t);
  static const Read next = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
  static int reads = 0;
  char path[PATH_MAX] = {};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const char* failing = std::getenv("FAILING_READ");
  const bool known = readlink(link.c_str(), path, sizeof path - 1) > 0;
  if (size == 0 || failing == nullptr || !known || std::strcmp(path, failing) != 0) {
    return next(descriptor, block, size);
  }
  if (reads++ == 0) return next(descriptor, block, std::min<size_t>(size, 8));
  errno = EIO;
  return -1;
}
