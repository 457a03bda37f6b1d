#include "tools/kelcalc/completion.h"

#include <cstddef>

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
  Completion completion{word.size(), {}};
  for (const std::string& name : names) {
    if (name.starts_with(word)) completion.candidates.push_back(name);
  }
  return completion;
}

}  // namespace

Completion Complete(std::string_view beforeCursor, const KnownNames& known) {
  const std::string_view name = LastRun(beforeCursor, IsNameChar);
  const std::string_view beforeName = beforeCursor.substr(0, beforeCursor.size() - name.size());
  if (beforeName.ends_with(';')) return Matching(name, known.functions);
  if (!name.empty()) return IsLetter(name.front()) ? Matching(name, known.variables) : Completion{};
  const std::string_view sign = LastRun(beforeCursor, IsOperatorChar);
  return sign.empty() ? Completion{} : Matching(sign, known.operators);
}

}  // namespace kelcalc
