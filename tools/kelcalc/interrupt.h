#pragma once

#include <csignal>

namespace kelcalc {

/// Lets Ctrl-C end what is running instead of the process: from now on SIGINT only raises
/// `InterruptRequested` and breaks off a read of the terminal.
void CatchInterrupts();

/// Not 0 after a Ctrl-C; whoever acts on it sets it back.
extern volatile std::sig_atomic_t InterruptRequested;

}  // namespace kelcalc
