#include "tools/compound_check/options.h"

const char* const HelpText =
    "Usage: compound_check [--strict] [--verbose] [-l] FILE...\n"
    "       compound_check -x PATH FILE\n"
    "Tells whether compound files, versions 3 and 4, are whole, and what is in them.\n"
    "\n"
    "  --strict   also report what is unusual, although nothing is lost by it\n"
    "  --verbose  with each finding, print its offset in FILE and the numbers\n"
    "  -l         list what each FILE holds: path, size in bytes, type\n"
    "  -x PATH    write the stream PATH, as -l shows it, to the standard output\n"
    "  --         what follows are files, whatever they are called\n"
    "  --help, --version\n"
    "\n"
    "Exit status: 0 when every FILE is whole (with -x: the stream is); 1 when one is damaged, or\n"
    "with --strict unusual; 2 when one cannot be read or the arguments are wrong.\n";

namespace {

struct Flag {
  const char* name;
  bool Options::*value;
};

constexpr Flag Flags[] = {
    {"-l", &Options::list},     {"--strict", &Options::strict},   {"--verbose", &Options::verbose},
    {"--help", &Options::help}, {"--version", &Options::version},
};

bool SetFlag(const std::string& argument, Options& options) {
  for (const Flag& flag : Flags) {
    if (argument == flag.name) return options.*flag.value = true;
  }
  return false;
}

std::string ProblemOf(const Options& options) {
  if (options.help || options.version) return "";
  if (options.files.empty()) return "no file is given";
  if (!options.extract) return "";
  if (options.list) return "-l and -x do not go together";
  return options.files.size() == 1 ? "" : "-x takes one file";
}

}  // namespace

bool ReadOptions(const std::vector<std::string>& arguments, Options& options,
                 std::string& complaint) {
  bool onlyFiles = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (onlyFiles || argument.empty() || argument[0] != '-') {
      options.files.push_back(argument);
    } else if (argument == "--") {
      onlyFiles = true;
    } else if (argument == "-x" && i + 1 < arguments.size()) {
      options.extract = arguments[++i];
    } else if (!SetFlag(argument, options)) {
      complaint = argument == "-x" ? "-x needs the path of a stream" : "unknown option " + argument;
      return false;
    }
  }
  complaint = ProblemOf(options);
  return complaint.empty();
}
