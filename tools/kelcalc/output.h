#pragma once

/// What is printed either arrives or ends the process: output is never lost silently.

/// Makes writing to a closed pipe an error instead of the silent end of the process.
void WatchOutput();

/// Ends the process with a message and status 1 when something could not be written so far.
void EndIfOutputFailed();

/// Writes out what is buffered, then ends the process: with `status`, or as above.
[[noreturn]] void EndWithOutput(int status);
