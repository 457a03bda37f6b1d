#include "tools/kelcalc/completion.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "tools/kelcalc/help_topics.h"
#include "tools/kelcalc/session_words.h"

namespace kelcalc {
namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsNameChar(char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '_'; }

bool IsOperatorChar(char c) {
  return c != '\0' && std::string_view("!#$%&'*+-/:<=>?@\\^`{|}~").find(c) != std::string::npos;
}

std::string_view LastRun(std::string_view text, bool (*belongs)(char)) {
  std::size_t start = text.size();
  while (start > 0 && belongs(text[start - 1])) --start;
  return text.substr(start);
}

Completion Matching(std::string_view word, const std::vector<std::string>& names) {
  Completion completion;
  completion.wordLength = word.size();
  for (const std::string& name : names) {
    if (name.starts_with(word)) completion.candidates.push_back(name);
  }
  return completion;
}

std::vector<std::string> Everything(const KnownNames& known) {
  std::vector<std::string> names = known.operators;
  for (const std::string& function : known.functions) names.push_back(';' + function);
  names.insert(names.end(), known.variables.begin(), known.variables.end());
  for (const SessionWord& word : SessionWords) names.emplace_back(word.name);
  return names;
}

/// Completes a line that begins with ":", which is a word of the session or begins one.
Completion CompleteSession(std::string_view line) {
  const SessionWord* word = FindSessionWord(line);
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos) {
    std::vector<std::string> names;
    for (const SessionWord& one : SessionWords) names.emplace_back(one.name);
    return Matching(line, names);
  }
  const std::string_view argument = line.substr(line.find_last_of(' ') + 1);
  if (word == nullptr) return {};
  if (word->takes == WordTakes::Name) return Matching(argument, HelpNames());
  return word->takes == WordTakes::File ? CompleteFile(argument, " ") : Completion{};
}

/// Whether a string of the language holds `name` as it is.
bool IsPlain(const std::string& name) {
  return std::none_of(name.begin(), name.end(), [](unsigned char c) {
    return c < 0x20 || c == 0x7F || c == '"' || c == '\\';
  });
}

}  // namespace

Completion CompleteFile(std::string_view path, const std::string& end) {
  namespace fs = std::filesystem;
  const std::size_t slash = path.find_last_of('/') + 1;  // 0 when there is none
  const std::string folder(path.substr(0, slash));
  const std::string_view begun = path.substr(slash);
  Completion completion{path.size(), {}, end};
  std::error_code ignored;
  fs::directory_iterator at(folder.empty() ? "." : folder, ignored);
  for (; at != fs::directory_iterator(); at.increment(ignored)) {
    const fs::directory_entry& entry = *at;
    const std::string name = entry.path().filename().string();
    const bool hidden = name.starts_with('.') && !begun.starts_with('.');
    if (!name.starts_with(begun) || hidden || !IsPlain(name)) continue;
    completion.candidates.push_back(folder + name + (entry.is_directory(ignored) ? "/" : ""));
  }
  std::sort(completion.candidates.begin(), completion.candidates.end());
  const std::vector<std::string>& found = completion.candidates;
  if (found.size() == 1 && found[0].ends_with('/')) completion.end = "";
  return completion;
}

Completion Complete(std::string_view beforeCursor, const KnownNames& known) {
  if (beforeCursor.find_first_not_of(' ') == std::string_view::npos) return {0, Everything(known)};
  if (beforeCursor.starts_with(':')) {
    if (Completion words = CompleteSession(beforeCursor); !words.candidates.empty()) return words;
  }
  const std::string_view name = LastRun(beforeCursor, IsNameChar);
  const std::string_view beforeName = beforeCursor.substr(0, beforeCursor.size() - name.size());
  if (beforeName.ends_with(';')) return Matching(name, known.functions);
  if (!name.empty()) return IsLetter(name.front()) ? Matching(name, known.variables) : Completion{};
  const std::string_view sign = LastRun(beforeCursor, IsOperatorChar);
  return sign.empty() ? Completion{} : Matching(sign, known.operators);
}

}  // namespace kelcalc
