#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

struct CaInterpreter;

namespace kelcalc {

struct DisplayStyle;
class Snapshots;

/// What the words of a session work on.
struct SessionState {
  CaInterpreter& interpreter;
  const DisplayStyle& style;
  Snapshots& snapshots;
  const std::string& picturesFrom;  // as --view-from says
  bool ended = false;               // set by :quit
};

/// What stands behind a word.
enum class WordTakes : std::int32_t { Nothing, Name, File };

/// A word that a line of a session may begin with, as ":save". No program knows them.
struct SessionWord {
  std::string_view name;
  WordTakes takes;
  const char* argument;  // how the help calls it: "FILE"; "[NAME]" may be left out
  const char* help;
  bool changes;  // the stack, which is shown afterwards
  void (*run)(SessionState& state, const std::string& argument);
};

extern const std::span<const SessionWord> SessionWords;

/// The word that `line` begins with, or null.
const SessionWord* FindSessionWord(std::string_view line);

/// Runs `word`, which `line` begins with. What it says goes to the standard output.
void RunSessionWord(const SessionWord& word, std::string_view line, SessionState& state);

/// What a line that means something else in the language was probably meant to be, as a line to
/// be shown; empty for most lines. It may be run as it stands all the same.
std::string HintFor(std::string_view line, const CaInterpreter& interpreter);

}  // namespace kelcalc
