#include "tools/kelcalc/output.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef __GLIBC__
#include <poll.h>
#include <sys/types.h>
#include <unistd.h>
#endif

namespace {

bool Failing = false;  // from then on nothing is written to the standard output any more

[[noreturn]] void Fail(int reason) {
  Failing = true;
  if (reason != EPIPE) {
    std::fprintf(stderr, "kelcalc: cannot write to the standard output: %s\n",
                 std::strerror(reason == 0 ? EIO : reason));
  }
  // Not the normal exit, which would try to write once more.
  std::_Exit(1);
}

#ifdef __GLIBC__

constexpr std::size_t BufferSize = 64 * 1024;

/// Writes `text` whole, waiting where the other end does not block. Returns 0 or the reason of
/// the failure.
int WriteAll(int descriptor, const char* text, std::size_t size) {
  while (size > 0) {
    const ssize_t count = write(descriptor, text, size);
    if (count >= 0) {
      text += count;
      size -= static_cast<std::size_t>(count);
    } else if (errno == EAGAIN) {
      pollfd ready = {descriptor, POLLOUT, 0};
      poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

/// The process ends where the reason of the failure is still known.
ssize_t WriteOutput(void*, const char* text, std::size_t size) {
  const int reason = WriteAll(STDOUT_FILENO, text, size);
  if (reason != 0) Fail(reason);
  return static_cast<ssize_t>(size);
}

ssize_t WriteMessage(void*, const char* text, std::size_t size) {
  if (!Failing) std::fflush(stdout);
  WriteAll(STDERR_FILENO, text, size);  // nobody is left to be told of a failure
  return static_cast<ssize_t>(size);
}

std::FILE* StreamOver(cookie_write_function_t* write, int buffering, std::size_t size) {
  cookie_io_functions_t functions = {};
  functions.write = write;
  std::FILE* stream = fopencookie(nullptr, "w", functions);
  if (stream != nullptr) std::setvbuf(stream, nullptr, buffering, size);
  return stream;
}

/// The C library's streams are variables that may be replaced; everything that writes to them, the
/// geometry library included, then goes through the functions above.
void ReplaceStreams(bool session) {
  if (std::FILE* messages = StreamOver(WriteMessage, _IONBF, 0)) stderr = messages;
  if (session) return;  // there Ctrl-C breaks writes off
  const int buffering = isatty(STDOUT_FILENO) != 0 ? _IOLBF : _IOFBF;
  if (std::FILE* output = StreamOver(WriteOutput, buffering, BufferSize)) stdout = output;
}

#else

void ReplaceStreams(bool) {}

#endif

}  // namespace

void WatchOutput(bool session) {
#ifdef SIGPIPE
  if (session) std::signal(SIGPIPE, SIG_IGN);
#endif
  ReplaceStreams(session);
}

void HandOnOutput() {
  const bool failedBefore = std::ferror(stdout) != 0;
  errno = 0;
  if (std::fflush(stdout) != 0 || failedBefore) Fail(errno);
}

void EndWithOutput(int status) {
  HandOnOutput();
  std::exit(status);
}
