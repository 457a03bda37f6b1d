#pragma once

#include <atomic>

namespace kelcalc {

/// Lets Ctrl-C end what is running instead of the process: from now on SIGINT only raises
/// `InterruptRequested`, and breaks off a read that waits.
void CatchInterrupts();

/// Not 0 after a Ctrl-C; whoever acts on it sets it back.
extern std::atomic<int> InterruptRequested;

/// Ctrl-C breaks off writes as well as reads. After one, forgets that standard output has failed:
/// what was being printed may be lost, and a failure of another cause comes again.
void ForgiveOutput();

/// Waits until standard input can be read without waiting, or has ended; returns false when
/// Ctrl-C comes first. None is missed, however close to the call it comes.
bool WaitForInput();

}  // namespace kelcalc
