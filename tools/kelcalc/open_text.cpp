#include "tools/kelcalc/open_text.h"

namespace kelcalc {
namespace {

constexpr int LongestString = 1024;  // the reader ends a string there, without a quotation mark

}  // namespace

void OpenText::Take(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (inString) {
      TakeInString(c);
    } else if (comments > 0) {
      TakeInComment(c);
    } else if (c == '"') {
      inString = true;
      stringLength = 0;
      openedAt = at;
    } else if (c == '[') {
      comments = 1;
    }
  }
}

void OpenText::TakeInString(char c) {
  if (!escaped && (c == '"' || c == '\0')) {
    inString = false;
  } else if (!escaped && c == '\\') {
    escaped = true;
  } else {
    escaped = false;
    inString = ++stringLength < LongestString;
  }
}

void OpenText::TakeInComment(char c) {
  if (c == '\0' || c == '\xFF') {
    comments = 0;
  } else if (!escaped && c == '\\') {
    escaped = true;
    return;
  } else if (!escaped && c == ']') {
    --comments;
  } else if (!escaped && c == '[') {
    ++comments;
  }
  escaped = false;
}

char OpenText::Opening() const {
  if (inString) return '"';
  return comments > 0 ? '[' : '\0';
}

}  // namespace kelcalc
