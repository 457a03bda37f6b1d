#pragma once

/// What ends the process when the top-level input has ended. A hook that returns makes
/// `RunTopLevel` return instead, with the stack and the table of variables empty.
using CaExitHook = void (*)(int status);

/// Replaces the hook, by default the normal exit of the process, and returns the one before.
/// Null stands for the default.
CaExitHook SetExitHook(CaExitHook hook);

/// Calls the hook.
void CallExitHook(int status);
