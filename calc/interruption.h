#pragma once

/// Thrown between two tokens when the interpreter's `interruptRequested` is set, and by a source
/// that drops what was begun. It leads out of every file that is being run, to whoever started
/// the outermost one; the inputs are restored on the way, stack and variables stay.
struct CaInterruption {};
