#include "calc/file_functions.h"

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "calc/interpreter.h"
#include "calc/object.h"
#include "calc/run.h"

namespace {

constexpr std::size_t LongestName = 255;

/// Deliberate: any point counts, also one in the name of a folder, so "./out" stays without an
/// extension. Held by the file names in the file tests.
std::string PathOf(std::string_view name) {
  std::string path(name.substr(0, LongestName));
  if (path.find('.') == std::string::npos) path += ".3dc";
  return path;
}

/// The path named on top of the stack, if there is a string.
std::optional<std::string> TopPath(const CaInterpreter& interpreter) {
  const CaValue& top = *interpreter.Peek(0)->Value();
  if (top.type != TypeString) return std::nullopt;
  return PathOf(top.text);
}

}  // namespace

int WriteVariables(const CaInterpreter& interpreter, const char* path) {
  if (path == nullptr || *path == '\0') return 0;
  std::FILE* file = std::fopen(path, "w");
  if (file == nullptr) return 0;
  const CaListNode* node = interpreter.variables.head;
  for (; node != nullptr; node = node->next) {
    const char* name = node->payload == nullptr ? nullptr : node->payload->Name();
    if (name == nullptr || *name == '\0') continue;
    interpreter.FindVariable(name)->Print(file);
    std::fprintf(file, "%s : \n", name);
  }
  const bool written = std::ferror(file) == 0;
  return std::fclose(file) == 0 && written ? 1 : 0;
}

int WriteVariablesFile(CaInterpreter& interpreter) {
  const std::optional<std::string> path = TopPath(interpreter);
  if (!path || WriteVariables(interpreter, path->c_str()) == 0) return 0;
  interpreter.PopValues(1);
  return 1;
}

int ReadProgramFile(CaInterpreter& interpreter) {
  const std::optional<std::string> path = TopPath(interpreter);
  if (!path || RunFile(interpreter, path->c_str()) == 0) return 0;
  // Deliberate: one would expect the file's name to be popped. Whatever is on top goes, which is
  // the name only when the file left the stack as it was. Held by the file tests.
  interpreter.PopValues(1);
  return 1;
}
