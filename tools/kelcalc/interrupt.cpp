#include "tools/kelcalc/interrupt.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#ifndef _WIN32
#include <sys/select.h>
#include <unistd.h>
#endif

namespace kelcalc {

std::atomic<int> InterruptRequested = 0;

namespace {

volatile std::sig_atomic_t OutputDisturbed = 0;  // a Ctrl-C came since ForgiveOutput was called

extern "C" void RequestInterrupt(int signal) {
  InterruptRequested = 1;
  OutputDisturbed = 1;
#ifdef _WIN32
  std::signal(signal, RequestInterrupt);  // there a handler serves once
#else
  (void)signal;
#endif
}

}  // namespace

void CatchInterrupts() {
#ifdef _WIN32
  std::signal(SIGINT, RequestInterrupt);
#else
  struct sigaction action = {};
  action.sa_handler = RequestInterrupt;  // without SA_RESTART: a read must come back
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
#endif
}

void ForgiveOutput() {
  if (OutputDisturbed != 0) std::clearerr(stdout);
  OutputDisturbed = 0;
}

bool WaitForInput() {
#ifndef _WIN32
  sigset_t interrupt;
  sigset_t before;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  sigprocmask(SIG_BLOCK, &interrupt, &before);  // pselect lets it in, and nothing else does
  int ready = 0;
  while (InterruptRequested == 0 && ready <= 0) {
    fd_set input;
    FD_ZERO(&input);
    FD_SET(STDIN_FILENO, &input);
    ready = pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, nullptr, &before);
    if (ready < 0 && errno != EINTR) break;  // reading will tell what is wrong
  }
  sigprocmask(SIG_SETMASK, &before, nullptr);
#endif
  return InterruptRequested == 0;
}

}  // namespace kelcalc
