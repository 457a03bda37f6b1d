#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/kelcalc/line_editor.h"

namespace kelcalc {

/// The names that a line can hold.
struct KnownNames {
  std::vector<std::string> operators;
  std::vector<std::string> functions;  // without their ";"
  std::vector<std::string> variables;
};

/// The names that complete the word at the end of `beforeCursor`, in the order they are known in:
/// functions after ";", variables for a name, operators for a run of operator characters; words of
/// the session, and what they take, in a line that begins like one. Everything there is for an
/// empty line; nothing after a number or where no word stands.
Completion Complete(std::string_view beforeCursor, const KnownNames& known);

/// The files and folders that `path` may go on to; behind the only file there is, `end` is typed.
Completion CompleteFile(std::string_view path, const std::string& end);

}  // namespace kelcalc
