#pragma once

#include <cstddef>
#include <string_view>

namespace kelcalc {

/// Follows text only as far as to know whether it ends inside a string or a comment, which may
/// run over several lines.
class OpenText {
 public:
  /// Goes on through `text`.
  void Take(std::string_view text);

  /// The quotation mark or the bracket that still waits for its end; 0 when none does.
  char Opening() const;

  /// Where in the text that was taken last it stands, if it stands there.
  std::size_t OpenedAt() const { return openedAt; }

 private:
  void TakeInString(char c);
  void TakeInComment(char c);

  bool inString = false;
  bool escaped = false;  // by a backslash, in either
  int comments = 0;      // open brackets
  int stringLength = 0;
  std::size_t openedAt = 0;
};

}  // namespace kelcalc
