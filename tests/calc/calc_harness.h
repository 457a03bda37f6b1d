#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "calc/character_source.h"
#include "calc/interpreter.h"

/// One row of a table: a source text and what it must write. The text is run as a nested input,
/// so its last name or operator needs a character behind it.
struct Program {
  std::string text;
  std::string output;
  std::string errors;
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

  /// The same through `NextObject` and the objects' `Apply`, from blocks that end everywhere.
  Written RunObjects(std::string_view text);

  CaInterpreter interpreter;
};

/// Runs `program` in an interpreter of its own, and once more by the objects that `NextObject`
/// makes; a failure shows the program.
void RunProgram(const Program& program);

/// Gives `text`, which must outlive it, in blocks of `size` bytes.
CaCharacterSource InBlocks(std::string_view text, std::size_t size);

/// `count` times `unit`.
std::string Repeat(std::string_view unit, int count);

/// The bytes of the file at `path`; a missing file reads as "(no file)".
std::string ReadTextFile(const char* path);
