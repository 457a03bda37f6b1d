#include "tools/kelcalc/input.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#ifdef _WIN32
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

#include "tools/kelcalc/output.h"

namespace kelcalc {
namespace {

bool Failed = false;

std::ptrdiff_t Read(char* block, std::size_t size) {
#ifdef _WIN32
  return _read(0, block, static_cast<unsigned>(size));
#else
  return read(STDIN_FILENO, block, size);
#endif
}

/// Whether a read that failed for `reason` is worth another try; waits until it is.
bool MayTryAgain(int reason) {
  if (reason == EINTR) return true;
#ifdef _WIN32
  return false;
#else
  if (reason != EAGAIN) return false;
  pollfd ready = {STDIN_FILENO, POLLIN, 0};
  return poll(&ready, 1, -1) >= 0 || errno == EINTR;
#endif
}

}  // namespace

std::ptrdiff_t ReadStandardInput(char* block, std::size_t size) {
  HandOnOutput();
  std::ptrdiff_t count = 0;
  do {
    count = Read(block, size);
  } while (count < 0 && MayTryAgain(errno));
  return count < 0 ? -errno : count;
}

void ReportUnreadInput(const std::string& name, int reason) {
  const char* told = name == StandardInputName ? "the standard input" : name.c_str();
  std::fprintf(stderr, "kelcalc: cannot read %s: %s\n", told, std::strerror(reason));
  Failed = true;
}

bool InputFailed() { return Failed; }

}  // namespace kelcalc
