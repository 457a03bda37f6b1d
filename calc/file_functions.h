#pragma once

struct CaInterpreter;

/// Functions of the file that the string on top names. The path is the first 255 bytes of the
/// string, with ".3dc" behind it when there is no point anywhere in it.

int WriteVariablesFile(CaInterpreter& interpreter);  // name ;write
int ReadProgramFile(CaInterpreter& interpreter);     // name ;read

/// Writes all variables to the file at `path`, the most recent one first, as a program that
/// defines them again. Returns 1, or 0 without a message when `path` is null or empty, when the
/// file cannot be created or when not all of it could be written.
int WriteVariables(const CaInterpreter& interpreter, const char* path);
