#include "tools/kelcalc/session_words.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "calc/interpreter.h"
#include "calc/object.h"
#include "calc/run.h"
#include "tools/kelcalc/exact_text.h"
#include "tools/kelcalc/file_writing.h"
#include "tools/kelcalc/help_topics.h"
#include "tools/kelcalc/picture.h"
#include "tools/kelcalc/reference.h"
#include "tools/kelcalc/snapshots.h"
#include "tools/kelcalc/stack_display.h"

namespace kelcalc {
namespace {

constexpr std::string_view Blanks = " \t\r\n";

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(Blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

std::string WordsText() {
  std::string text =
      "Values go onto the stack, operators take them from there: 1 2 + # prints 3.\n\n";
  for (const SessionWord& word : SessionWords) {
    std::string line = "  " + std::string(word.name) + ' ' + word.argument;
    line.resize(std::max<std::size_t>(line.size() + 1, 17), ' ');
    text += line + word.help + '\n';
  }
  text += "\nTopics:";
  for (const std::string& topic : TopicNames()) text += ' ' + topic;
  return text + '\n';
}

void Help(SessionState&, const std::string& name) {
  const std::string text = name.empty() ? WordsText() : HelpText(name);
  if (text.empty()) {
    std::printf("no operator, function, type or topic is called %s\n", name.c_str());
  } else {
    std::fputs(text.c_str(), stdout);
  }
}

void List(SessionState&, const std::string&) { std::fputs(SummaryText().c_str(), stdout); }

void Vars(SessionState& state, const std::string&) {
  ShowVariables(state.interpreter, state.style, stdout);
}

void Undo(SessionState& state, const std::string&) {
  if (!state.snapshots.Restore(state.interpreter)) std::puts("there is nothing to undo");
}

void Save(SessionState& state, const std::string& name) {
  const std::string path = ProgramPath(name);
  const std::string reason = WriteFile(path, ExactProgram(state.interpreter));
  if (!reason.empty()) std::printf("cannot write %s: %s\n", path.c_str(), reason.c_str());
}

void Load(SessionState& state, const std::string& name) {
  state.snapshots.Take(state.interpreter);
  RunExecutableFile(state.interpreter, ProgramPath(name).c_str());
}

void View(SessionState& state, const std::string& name) {
  const std::string said = name.empty()
                               ? ShowPicture(state.interpreter, state.picturesFrom)
                               : WritePictures(state.interpreter, {name}, state.picturesFrom);
  if (!said.empty()) std::printf("%s\n", said.c_str());
}

void Quit(SessionState& state, const std::string&) { state.ended = true; }

// clang-format off
constexpr SessionWord AllWords[] = {
    {":help", WordTakes::Name, "[NAME]", "this; or about an operator, a function, a type, a topic",
     false, Help},
    {":list", WordTakes::Nothing, "", "all operators and functions", false, List},
    {":vars", WordTakes::Nothing, "", "all variables", false, Vars},
    {":undo", WordTakes::Nothing, "", "stack and variables as they were before the last line",
     true, Undo},
    {":save", WordTakes::File, "FILE", "write stack and variables, with every digit", false, Save},
    {":load", WordTakes::File, "FILE", "run a file, such as one that :save wrote", true, Load},
    {":view", WordTakes::File, "[FILE]",
     "a picture of all values, at once or in FILE (.svg, .html, .glb)", false, View},
    {":quit", WordTakes::Nothing, "", "end the session, as Ctrl-D does", false, Quit},
};
// clang-format on

/// What stands behind the word, without the quotation marks that it may be put in.
std::string ArgumentOf(std::string_view line, const SessionWord& word) {
  std::string_view argument = Trimmed(line.substr(word.name.size()));
  if (word.takes == WordTakes::File && argument.starts_with('"')) {
    argument.remove_prefix(1);
    if (argument.ends_with('"')) argument.remove_suffix(1);
  }
  return std::string(argument);
}

}  // namespace

const std::span<const SessionWord> SessionWords(AllWords);

const SessionWord* FindSessionWord(std::string_view line) {
  const std::string_view first = line.substr(0, line.find_first_of(Blanks));
  const auto word = std::find_if(SessionWords.begin(), SessionWords.end(),
                                 [&](const SessionWord& one) { return one.name == first; });
  return word == SessionWords.end() ? nullptr : &*word;
}

void RunSessionWord(const SessionWord& word, std::string_view line, SessionState& state) {
  const std::string argument = ArgumentOf(line, word);
  const std::string name(word.name);
  if (word.takes == WordTakes::Nothing && !argument.empty()) {
    std::printf("%s stands alone\n", name.c_str());
  } else if (word.takes == WordTakes::File && *word.argument != '[' && argument.empty()) {
    std::printf("%s needs the name of a file\n", name.c_str());
  } else {
    word.run(state, argument);
  }
}

std::string HintFor(std::string_view line, const CaInterpreter& interpreter) {
  const std::string text(Trimmed(line));
  const std::string name = text.substr(text.starts_with(':') ? 1 : 0);
  const bool isName = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  });
  if (!isName || interpreter.FindVariable(name.c_str())->type != TypeNothing) return "";
  if (text.starts_with(':')) return text + " is no word of a session; :help lists them";
  if (name == "help") return "help is a name here; for help type :help";
  if (name == "exit" || name == "quit") return name + " is a name here; to leave type :quit";
  return "";
}

}  // namespace kelcalc
