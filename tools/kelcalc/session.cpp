#include "tools/kelcalc/session.h"

#include <kelcalc.h>
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "calc/dispatch.h"
#include "calc/interpreter.h"
#include "tools/kelcalc/completion.h"
#include "tools/kelcalc/history.h"
#include "tools/kelcalc/interrupt.h"
#include "tools/kelcalc/line_editor.h"
#include "tools/kelcalc/open_text.h"
#include "tools/kelcalc/output.h"
#include "tools/kelcalc/session_words.h"
#include "tools/kelcalc/snapshots.h"
#include "tools/kelcalc/stack_display.h"

namespace kelcalc {
namespace {

bool IsTerminal(int descriptor) {
#ifdef _WIN32
  return _isatty(descriptor) != 0;
#else
  return isatty(descriptor) != 0;
#endif
}

std::vector<std::string> NamesIn(const CaOperatorEntry* table) {
  std::vector<std::string> names;
  for (; *table->name != '\0'; ++table) names.emplace_back(table->name);
  return names;
}

/// The first line of a program that a shell would run; whoever pastes one means no operator.
constexpr std::string_view InterpreterMark = "#!";

class Session {
 public:
  Session(kel::Calculator& itsCalculator, const SessionSettings& sessionSettings,
          const DisplayStyle& displayStyle)
      : calculator(itsCalculator), settings(sessionSettings), style(displayStyle) {
    if (settings.lineEditing) editor = OpenScreenEditor(history, completer);
    if (editor == nullptr) editor = OpenPlainEditor();
  }

  void Run() {
    kel::Source terminal([this](char* block, std::size_t size) { return Fill(block, size); },
                         TerminalName);
    while (calculator.Run(terminal).end == kel::Outcome::End::Interrupted) {
      terminal.Drop();
      StartAfresh();
    }
  }

 private:
  /// Hands the line that was typed to the reader, which asks for more only when all that came
  /// before has been run. Throws kel::Interruption when the line is dropped.
  std::ptrdiff_t Fill(char* block, std::size_t size) {
    while (rest.empty()) {
      ForgiveOutput();
      HandOnOutput();
      const bool pasted = editor->MoreWaits();
      if (settings.showStack && changed && !pasted && open.Opening() == '\0') {
        ShowStack(interpreter, style, stdout);
        changed = false;
      }
      if (state.ended || !ReadLine()) return 0;
      TakeLine(pasted);
    }
    const std::size_t count = std::min(size, rest.size());
    std::memcpy(block, rest.data(), count);
    rest.remove_prefix(count);
    return static_cast<std::ptrdiff_t>(count);
  }

  /// False at the end of the input.
  bool ReadLine() {
    InterruptRequested = 0;
    const LineResult result = editor->ReadLine(Prompt(), line);
    InterruptRequested = 0;
    ForgiveOutput();
    if (result == LineResult::Interrupted) throw kel::Interruption();
    if (result == LineResult::Ended) return false;
    history.Add(line.substr(0, line.size() - 1));
    return true;
  }

  /// Runs a line that is for the session, makes any other the `rest`. What is `pasted` in several
  /// lines is one step.
  void TakeLine(bool pasted) {
    stepBegins = stepBegins || !pasted;
    if (open.Opening() == '\0') {
      if (line.starts_with(InterpreterMark)) return;
      if (const SessionWord* word = FindSessionWord(line); word != nullptr) {
        changed = word->changes;
        return RunSessionWord(*word, line, state);
      }
      const std::string hint = HintFor(line, interpreter);
      if (!hint.empty()) std::printf("%s\n", hint.c_str());
      if (stepBegins) snapshots.Take(interpreter);
      stepBegins = false;
    }
    open.Take(line);
    rest = line;
    changed = true;
  }

  /// The depth of the stack, and what is open: a string, a comment, a block that is skipped.
  std::string Prompt() const {
    char mark = open.Opening();
    if (mark == '\0') mark = interpreter.skipLevel < 0 ? '>' : '{';
    return std::to_string(interpreter.Depth()) + mark + ' ';
  }

  void StartAfresh() {
    InterruptRequested = 0;
    interpreter.skipLevel = -1;
    open = OpenText();
    rest = {};
    changed = false;
  }

  Completion CompleteWord(std::string_view beforeCursor) const {
    OpenText here = open;
    here.Take(beforeCursor);
    if (here.Opening() == '"' && open.Opening() == '\0') {
      return CompleteFile(beforeCursor.substr(here.OpenedAt() + 1), "\"");
    }
    if (here.Opening() != '\0') return {};
    KnownNames known{NamesIn(CaOperatorTable), NamesIn(CaFunctionTable), {}};
    for (const CaListNode* node = interpreter.variables.head; node != nullptr; node = node->next) {
      known.variables.emplace_back(node->payload->Name());
    }
    return Complete(beforeCursor, known);
  }

  kel::Calculator& calculator;
  CaInterpreter& interpreter = calculator.Engine();
  const SessionSettings& settings;
  const DisplayStyle& style;
  History history{HistoryPath()};
  Completer completer = [this](std::string_view before) { return CompleteWord(before); };
  std::unique_ptr<LineEditor> editor;
  std::string line;
  std::string_view rest;   // of `line`, not yet handed to the reader
  OpenText open;           // all lines since the last interrupt
  bool changed = false;    // something came since the stack was shown last
  bool stepBegins = true;  // with the next line
  Snapshots snapshots;
  SessionState state{interpreter, style, snapshots, settings.picturesFrom};
};

}  // namespace

bool AtTerminal() { return IsTerminal(0) && IsTerminal(1); }

bool ColoursWanted() {
  const char* noColour = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  return IsTerminal(1) && (noColour == nullptr || *noColour == '\0') && terminal != nullptr &&
         *terminal != '\0' && std::strcmp(terminal, "dumb") != 0;
}

void RunSession(kel::Calculator& calculator, const SessionSettings& settings,
                const DisplayStyle& style) {
  CatchInterrupts();
  if (IsTerminal(1)) std::puts("A calculator for 3-D geometry. :help tells how, :quit leaves.");
  calculator.Engine().interruptRequested = &InterruptRequested;
  Session(calculator, settings, style).Run();
}

}  // namespace kelcalc
