#pragma once

#include <span>
#include <string>
#include <string_view>

#include "calc/interpreter.h"

/// One row of a table: a source text and what it must write. The text is run as a nested input,
/// so its last name or operator needs a character behind it.
struct Program {
  std::string_view text;
  std::string_view output;
  std::string_view errors;
};

struct Written {
  std::string output;
  std::string errors;
};

/// An interpreter whose stack and variables last from one text to the next.
class Calculator {
 public:
  Calculator();

  /// Runs `text` and returns what went to the process's output and error streams.
  /// When the environment names a folder in KEL_CORPUS, the text is kept there as well.
  Written Run(std::string_view text);

  /// The same through `NextObject` and the objects' `Apply`.
  Written RunObjects(std::string_view text);

  CaInterpreter interpreter;
};

/// Runs every row in an interpreter of its own, and once more by the objects that `NextObject`
/// makes; a failing row shows its program.
void RunPrograms(std::span<const Program> programs);

/// `count` times `unit`.
std::string Repeat(std::string_view unit, int count);

/// Replaces the file at `path` by `text`, byte by byte.
void WriteTextFile(const char* path, std::string_view text);

/// The bytes of the file at `path`; a missing file reads as "(no file)".
std::string ReadTextFile(const char* path);
