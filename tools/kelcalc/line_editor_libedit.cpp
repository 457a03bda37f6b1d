#include <histedit.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/kelcalc/history.h"
#include "tools/kelcalc/input.h"
#include "tools/kelcalc/interrupt.h"
#include "tools/kelcalc/line_editor.h"
#include "tools/kelcalc/typed_bytes.h"

namespace kelcalc {
namespace {

constexpr char EndKey = 0x04;                        // Ctrl-D
constexpr const char* AsciiOnly = "ANSI_X3.4-1968";  // in which no other byte can be shown

/// The longest text that every one of `words` begins with. `words` is not empty.
std::string CommonBeginning(const std::vector<std::string>& words) {
  std::string common = words.front();
  for (const std::string& word : words) {
    const auto differs = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
    common.erase(differs.first, common.end());
  }
  return common;
}

class ScreenEditor final : public LineEditor {
 public:
  ScreenEditor(const History& allLines, const Completer& wordCompleter)
      : completer(wordCompleter),
        editor(el_init("kelcalc", stdin, stdout, stderr)),
        lines(history_init()),
        source(allLines) {
    HistEvent event;
    history(lines, &event, H_SETSIZE, static_cast<int>(History::MostLines));
    el_set(editor, EL_CLIENTDATA, this);
    el_set(editor, EL_PROMPT, &ScreenEditor::Prompt);
    el_set(editor, EL_SIGNAL, 1);  // the terminal is put right before a signal's handler runs
    el_set(editor, EL_EDITOR, "emacs");
    el_set(editor, EL_HIST, history, lines);
    el_wset(editor, EL_ADDFN, L"kelcalc-complete", L"Completes a name", &ScreenEditor::CompleteKey);
    el_set(editor, EL_BIND, "\t", "kelcalc-complete", nullptr);
    el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    // Escape and "x" would let libedit read a command of its own; an open quotation mark in that
    // makes it crash.
    el_set(editor, EL_BIND, "-r", "^[x", nullptr);
    el_wset(editor, EL_GETCFN, &ScreenEditor::ReadKey);
    el_source(editor, nullptr);  // the user's own bindings, ~/.editrc
  }

  ~ScreenEditor() override {
    el_end(editor);
    history_end(lines);
  }

  LineResult ReadLine(const std::string& prompt, std::string& line) override {
    TakeNewHistory();
    currentPrompt = prompt;
    interrupted = false;
    untaken.clear();
    std::fflush(stdout);
    int count = 0;
    el_resize(editor);                // it may have changed while programs ran
    el_set(editor, EL_PREP_TERM, 1);  // before the prompt invites to type
    const char* text = el_gets(editor, &count);
    if (text == nullptr || count <= 0 || interrupted) {
      line.clear();
      std::putc('\n', stdout);
      return interrupted || count < 0 ? LineResult::Interrupted : LineResult::Ended;
    }
    line = TypedBytes({text, static_cast<std::size_t>(count)});
    if (line.back() != '\n') line += '\n';
    return LineResult::Read;
  }

 private:
  static ScreenEditor& Of(EditLine* editLine) {
    void* self = nullptr;
    el_get(editLine, EL_CLIENTDATA, &self);
    return *static_cast<ScreenEditor*>(self);
  }

  static char* Prompt(EditLine* editLine) { return Of(editLine).currentPrompt.data(); }

  static unsigned char CompleteKey(EditLine* editLine, int) {
    return Of(editLine).CompleteAtCursor();
  }

  /// One character; -1 when Ctrl-C came first, 0 at the end. libedit's own routine would miss a
  /// Ctrl-C that comes between two reads, and lose bytes that are no characters.
  static int ReadKey(EditLine* editLine, wchar_t* key) {
    ScreenEditor& self = Of(editLine);
    while (!TakeCharacter(self.untaken, *key)) {
      char byte = 0;
      if (!WaitForInput()) {
        self.interrupted = true;
        return -1;
      }
      const auto count = read(STDIN_FILENO, &byte, 1);
      if (count < 0) ReportUnreadInput(StandardInputName, errno);
      if (count <= 0) return 0;
      // A Ctrl-D that was typed before the prompt came arrives as a NUL, which no key makes.
      self.untaken += byte == '\0' ? EndKey : byte;
    }
    return 1;
  }

  /// Types what is certain; when nothing is, lists what is possible below the line.
  unsigned char CompleteAtCursor() {
    const LineInfo* info = el_line(editor);
    const std::string before =
        TypedBytes({info->buffer, static_cast<std::size_t>(info->cursor - info->buffer)});
    const Completion found = completer(before);
    if (found.candidates.empty()) return CC_REFRESH_BEEP;
    std::string certain = CommonBeginning(found.candidates).substr(found.wordLength);
    if (found.candidates.size() == 1) certain += found.end;
    if (certain.empty()) {
      List(found.candidates);
      return CC_REDISPLAY;
    }
    el_insertstr(editor, EditedText(certain).c_str());
    return CC_REFRESH;
  }

  /// In columns, as many as the terminal has room for.
  void List(const std::vector<std::string>& words) {
    std::size_t width = 0;
    for (const std::string& word : words) width = std::max(width, word.size() + 2);
    const std::size_t columns = std::max<std::size_t>(1, Columns() / width);
    const std::size_t rows = (words.size() + columns - 1) / columns;
    for (std::size_t row = 0; row < rows; ++row) {
      std::fputc('\n', stdout);
      for (std::size_t at = row; at < words.size(); at += rows) {
        const bool last = at + rows >= words.size();
        std::fprintf(stdout, "%-*s", last ? 0 : static_cast<int>(width), words[at].c_str());
      }
    }
    std::fputc('\n', stdout);
    std::fflush(stdout);
  }

  std::size_t Columns() {
    winsize size = {};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
  }

  /// Hands over the lines that the history has got since the last call.
  void TakeNewHistory() {
    HistEvent event;
    const std::vector<std::string>& all = source.Lines();
    for (; taken < all.size(); ++taken) {
      history(lines, &event, H_ENTER, EditedText(all[taken]).c_str());
    }
  }

  const Completer& completer;
  EditLine* editor;  // owned
  ::History* lines;  // owned; libedit's copy of `source`
  const History& source;
  std::size_t taken = 0;  // lines of `source` that `lines` has
  std::string currentPrompt;
  std::string untaken;       // bytes that begin a character
  bool interrupted = false;  // while the line was being read
};

bool IsDumb(const char* terminal) {
  return terminal == nullptr || *terminal == '\0' || std::strcmp(terminal, "dumb") == 0;
}

}  // namespace

std::unique_ptr<LineEditor> OpenScreenEditor(const History& history, const Completer& completer) {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) return nullptr;
  if (IsDumb(std::getenv("TERM"))) return nullptr;
  std::setlocale(LC_CTYPE, "");  // what a character is; numbers keep their form
  if (std::strcmp(nl_langinfo(CODESET), AsciiOnly) == 0) std::setlocale(LC_CTYPE, "C.UTF-8");
  return std::make_unique<ScreenEditor>(history, completer);
}

}  // namespace kelcalc
