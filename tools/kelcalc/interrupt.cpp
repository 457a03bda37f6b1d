#include "tools/kelcalc/interrupt.h"

namespace kelcalc {

volatile std::sig_atomic_t InterruptRequested = 0;

namespace {

extern "C" void RequestInterrupt(int signal) {
  InterruptRequested = 1;
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

}  // namespace kelcalc
