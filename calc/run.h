#pragma once

#include <cstdint>
#include <string_view>

class CaCharacterSource;
struct CaInterpreter;

/// Programs inside one another; the next one is refused as a file that cannot be opened.
inline constexpr std::int32_t DeepestNesting = 256;

/// Runs the file at `path` to its end. Returns 1, or 0 with a message when the file cannot be
/// opened or `DeepestNesting` files are running already. The stack, the variables and the
/// skipping are left as the file left them; the input is as it was.
int RunFile(CaInterpreter& interpreter, const char* path);

/// The same for a text in memory, which messages call `name`.
int RunText(CaInterpreter& interpreter, std::string_view text, const char* name);

/// The same for any source, at whatever depth; returns 1.
int RunSource(CaInterpreter& interpreter, CaCharacterSource& source);

/// Runs the interpreter's input to its end, which empties the stack and the table of variables
/// and ends the process through the exit hook (exit_hook.h). Returns only when the hook does.
void RunTopLevel(CaInterpreter& interpreter);
