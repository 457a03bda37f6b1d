#pragma once

/// What is printed either arrives or ends the process: output is never lost silently. It arrives
/// before any message that comes later, and before the program waits for more input.

/// Takes charge of the standard output and the standard error. In a session a closed pipe breaks
/// no write off; elsewhere it ends the process at once, as it does with other filters.
void WatchOutput(bool session);

/// Writes out what is buffered. Ends the process with a message and status 1 when something could
/// not be written so far; without a message when nobody reads what is written.
void HandOnOutput();

/// The same, then ends the process with `status`.
[[noreturn]] void EndWithOutput(int status);
