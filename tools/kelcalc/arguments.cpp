#include "tools/kelcalc/arguments.h"

#include <cstddef>
#include <utility>

const char* const HelpText =
    "Usage: kelcalc [OPTION]... [FILE]...\n"
    "Runs programs of the postfix language for 3-D geometry: the FILEs in order, in one\n"
    "interpreter, or the standard input when none is given.\n"
    "\n"
    "  -           stands for the standard input\n"
    "  -e TEXT     run TEXT\n"
    "  --          what follows are files, whatever they are called\n"
    "  --help      show this help and end\n"
    "  --version   show the version and end\n"
    "\n"
    "A first line that begins with \"#!\" in a FILE is skipped.\n"
    "Exit status: 0; 1 when a FILE could not be opened or output could not be written;\n"
    "2 when the arguments are wrong.\n";

namespace {

Arguments Refused(std::string complaint) {
  Arguments refused;
  refused.task = Arguments::Task::Refuse;
  refused.complaint = std::move(complaint);
  return refused;
}

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& arguments) {
  Arguments parsed;
  bool onlyFiles = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (onlyFiles || argument.empty() || argument[0] != '-') {
      parsed.programs.push_back({Arguments::Kind::File, argument});
    } else if (argument == "-") {
      parsed.programs.push_back({Arguments::Kind::StandardInput, "standard input"});
    } else if (argument == "--") {
      onlyFiles = true;
    } else if (argument == "-e") {
      if (++i == arguments.size()) return Refused("option -e needs a text");
      parsed.programs.push_back({Arguments::Kind::Text, arguments[i]});
    } else if (argument == "--help") {
      parsed.task = Arguments::Task::ShowHelp;
      return parsed;
    } else if (argument == "--version") {
      parsed.task = Arguments::Task::ShowVersion;
      return parsed;
    } else {
      return Refused("unknown option " + argument);
    }
  }
  return parsed;
}
