#include "tools/kelcalc/output.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

[[noreturn]] void Fail(int reason) {
  std::fprintf(stderr, "kelcalc: cannot write to the standard output: %s\n",
               std::strerror(reason == 0 ? EIO : reason));
  // Not the normal exit, which would try to write once more.
  std::_Exit(1);
}

}  // namespace

void WatchOutput() {
#ifdef SIGPIPE
  std::signal(SIGPIPE, SIG_IGN);
#endif
}

void EndIfOutputFailed() {
  if (std::ferror(stdout) == 0) return;
  // Since it failed, errno may have come to tell of something else; what is left fails like it.
  errno = 0;
  std::fflush(stdout);
  Fail(errno);
}

void EndWithOutput(int status) {
  errno = 0;
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) Fail(errno);
  std::exit(status);
}
