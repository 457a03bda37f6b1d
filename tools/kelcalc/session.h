#pragma once

#include <string>

namespace kel {
class Calculator;
}

namespace kelcalc {

struct DisplayStyle;

/// What messages call the text that is typed in a session.
inline constexpr const char* TerminalName = "<terminal>";

/// How a session at a terminal looks.
struct SessionSettings {
  bool showStack = true;          // after each line
  bool lineEditing = true;        // where the terminal allows it
  std::string picturesFrom = {};  // the point where vectors start in pictures
};

/// True when a person sits at standard input and standard output both.
bool AtTerminal();

/// True when `NO_COLOR` and the kind of terminal leave room for colours.
bool ColoursWanted();

/// Runs what a person types until the end of the input; stack and variables stay.
/// Ctrl-C drops the line that is being typed, the string or comment that it goes on, the blocks
/// that are being skipped, and files that are being read; stack and variables stay.
void RunSession(kel::Calculator& calculator, const SessionSettings& settings,
                const DisplayStyle& style);

}  // namespace kelcalc
