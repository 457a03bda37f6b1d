#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelcalc {

class History;

/// Whether standard input is a terminal at which something waits to be read, or comes at once.
bool TerminalInputWaits();

/// What could stand at the cursor instead of the unfinished word that stands there.
struct Completion {
  std::size_t wordLength = 0;           // characters before the cursor that the word takes
  std::vector<std::string> candidates;  // whole words, each beginning with the unfinished one
  std::string end = " ";                // what ends a word that is certain
};

/// Finds the completions of a line that ends at the cursor.
using Completer = std::function<Completion(std::string_view beforeCursor)>;

/// How the reading of a line ended.
enum class LineResult {
  Read,         // `line` holds it, its newline included
  Interrupted,  // Ctrl-C: whatever was typed is dropped
  Ended,        // Ctrl-D on an empty line, or no more input
};

/// Reads lines from a person.
class LineEditor {
 public:
  LineEditor() = default;
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;
  virtual ~LineEditor() = default;

  /// Shows `prompt` and waits for a line. The last line before the end of the input gets the
  /// newline it lacks. `line` is replaced in every case.
  virtual LineResult ReadLine(const std::string& prompt, std::string& line) = 0;

  /// Whether more lines have come already, as when several are pasted at once. Only a terminal is
  /// asked.
  virtual bool MoreWaits() const { return TerminalInputWaits(); }
};

/// An editor with cursor keys, `history` and completion on the Tab key, or null where there is
/// none: built without one, or standard input, standard output or the terminal's type do not
/// allow it. Both arguments must outlive the editor; it only reads `history`.
std::unique_ptr<LineEditor> OpenScreenEditor(const History& history, const Completer& completer);

/// Lines as the terminal itself (or a pipe) delivers them. Always there.
std::unique_ptr<LineEditor> OpenPlainEditor();

}  // namespace kelcalc
