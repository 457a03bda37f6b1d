#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class CaCharacterSource;
class CaObject;
struct CaInterpreter;

/// Programs inside one another; the next one is refused as a file that cannot be opened.
inline constexpr std::int32_t DeepestNesting = 256;

/// The path of the file that a program calls `name`: its first 255 bytes, with ".3dc" behind them
/// when there is no point anywhere.
/// Deliberate: any point counts, also one in the name of a folder, so "./out" stays without an
/// extension. Held by NamesWithoutAPointGetTheExtension in files_test.cpp.
std::string ProgramPath(std::string_view name);

/// Runs the file at `path` to its end. Returns 1, or 0 with a message when the file cannot be
/// opened or `DeepestNesting` files are running already. The stack, the variables and the
/// skipping are left as the file left them; the input is as it was.
int RunFile(CaInterpreter& interpreter, const char* path);

/// The same for a file that somebody may have made executable: a first line that begins with "#!"
/// names the program that runs it and is passed over.
int RunExecutableFile(CaInterpreter& interpreter, const char* path);

/// The same for a text in memory, which messages call `name`.
int RunText(CaInterpreter& interpreter, std::string_view text, const char* name);

/// The same for any source, at whatever depth; returns 1.
int RunSource(CaInterpreter& interpreter, CaCharacterSource& source);

/// Runs the interpreter's input to its end, then closes it, unless it is the standard input, and
/// empties the stack and the table of variables. What becomes of the process is the caller's
/// choice; kelcalc ends it.
void RunTopLevel(CaInterpreter& interpreter);

/// The object that the next item of the input stands for: a value, a variable with its value of
/// this moment, or an operator. The caller owns it; `DestroyAsValue` releases it. At the end of the
/// input it throws `EndOfInput` (reader.h).
CaObject* NextObject(CaInterpreter& interpreter);
