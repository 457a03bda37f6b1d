#pragma once

#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>

#include "calc/dispatch.h"
#include "calc/interpreter.h"
#include "calc/run.h"

/// Functions of the file that the string on top names. The path is the first 255 bytes of the
/// string, with ".3dc" behind it when there is no point anywhere in it.

namespace operators {

/// The path named on top of the stack, if there is a string.
inline std::optional<std::string> TopPath(const CaInterpreter& interpreter) {
  const CaValue& top = *interpreter.Peek(0)->Value();
  if (top.type != TypeString) return std::nullopt;
  return ProgramPath(top.text);
}

/// Writes all variables to the file at `path`, the most recent one first, as a program that
/// defines them again. Returns 1, or 0 without a message when `path` is null or empty, when the
/// file cannot be created or when not all of it could be written.
inline int WriteVariables(const CaInterpreter& interpreter, const char* path) {
  if (path == nullptr || *path == '\0') return 0;
  std::FILE* file = std::fopen(path, "w");
  if (file == nullptr) return 0;
  const CaListNode* node = interpreter.variables.head;
  for (; node != nullptr; node = node->next) {
    const char* name = node->payload == nullptr ? nullptr : node->payload->Name();
    if (name == nullptr || *name == '\0') continue;
    interpreter.keep(file, interpreter, *interpreter.FindVariable(name));
    std::fprintf(file, "%s : \n", name);
  }
  const bool written = std::ferror(file) == 0;
  return std::fclose(file) == 0 && written ? 1 : 0;
}

inline int RunWrite(CaInterpreter& interpreter) {
  const std::optional<std::string> path = TopPath(interpreter);
  if (!path) return 0;
  errno = 0;
  if (WriteVariables(interpreter, path->c_str()) == 0) {
    interpreter.fileProblem = errno;
    return 0;
  }
  interpreter.PopValues(1);
  return 1;
}

inline int RunRead(CaInterpreter& interpreter) {
  const std::optional<std::string> path = TopPath(interpreter);
  if (!path || RunFile(interpreter, path->c_str()) == 0) return 0;
  // Deliberate: one would expect the file's name to be popped. Whatever is on top goes, which is
  // the name only when the file left the stack as it was. Held by ReadRunsTheFile in
  // files_test.cpp.
  interpreter.PopValues(1);
  return 1;
}

inline constexpr CaOperatorEntry Write = {
    .name = "write",
    .function = RunWrite,
    .sign = FunctionSign,
    .forms = TakesString,
    .help = {"write all variables to the file of this name, .3dc if it has no point",
             "5 x : \"kelcalc-example\" ;write \"written\" #", " \"written\"\n"},
};

inline constexpr CaOperatorEntry Read = {
    .name = "read",
    .function = RunRead,
    .sign = FunctionSign,
    .forms = TakesString,
    .help = {"run the file of this name, .3dc if it has no point",
             "5 x : \"kelcalc-example\" ;write 6 x : \"kelcalc-example\" ;read x #", " 5.000000\n"},
};

}  // namespace operators
