#include "tools/kelcalc/options.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "tools/kelcalc/number_style.h"

namespace kelcalc {

const char* const Usage =
    "usage: kelcalc [OPTION]... [FILE | - | -e TEXT]...\n"
    "Runs programs in a postfix language for 3-D geometry: the files, texts and standard input\n"
    "(-) in their order, on one stack; without any of them, standard input.\n"
    "\n"
    "  -e TEXT         run TEXT\n"
    "  -i              talk to a person, whatever standard input and output are; after the\n"
    "                  programs, if there are any\n"
    "  --no-stack      do not show the stack after each line of a session\n"
    "  --where         after each failure, say where it was and why (default in a session)\n"
    "  --no-where      do not\n"
    "  --strict        exit with status 1 when anything failed\n"
    "  --stop          the same, and end at the first failure\n"
    "  --digits N      print numbers with N significant digits (1 to 17)\n"
    "  --list          list all operators and functions\n"
    "  --explain NAME  explain one of them: its operands, its results, an example\n"
    "  --help, --version\n";

namespace {

void SetTask(Options& options, Task task) {
  if (options.task == Task::Run) options.task = task;
}

void AddText(Options& options, const char* text) {
  options.programs.push_back({Program::Text, text});
}

void AddStandardInput(Options& options) {
  options.programs.push_back({Program::StandardInput, ""});
}

void SetDigits(Options& options, const char* text) {
  const std::string_view digits = text;
  const auto end = std::from_chars(digits.begin(), digits.end(), options.digits);
  if (end.ec != std::errc() || end.ptr != digits.end() || options.digits < FewestDigits ||
      options.digits > MostDigits) {
    options.error = "--digits takes a number from 1 to 17, not '" + std::string(text) + "'";
  }
}

void SetExplained(Options& options, const char* name) {
  if (options.task == Task::Run) options.explained = name;
  SetTask(options, Task::Explain);
}

struct Flag {
  std::string_view name;
  void (*set)(Options&);
};

struct Setting {
  std::string_view name;
  const char* needs;
  void (*set)(Options&, const char* value);
};

// clang-format off
constexpr Flag Flags[] = {
    {"-i",         [](Options& options) { options.interactive = true; }},
    {"--no-stack", [](Options& options) { options.showStack = false; }},
    {"--where",    [](Options& options) { options.where = Choice::On; }},
    {"--no-where", [](Options& options) { options.where = Choice::Off; }},
    {"--strict",   [](Options& options) { options.strict = true; }},
    {"--stop",     [](Options& options) { options.stop = true; }},
    {"--list",     [](Options& options) { SetTask(options, Task::List); }},
    {"--help",     [](Options& options) { SetTask(options, Task::Help); }},
    {"--version",  [](Options& options) { SetTask(options, Task::Version); }},
    {"-",          AddStandardInput},
};

constexpr Setting Settings[] = {
    {"-e",        "text",   AddText},
    {"--digits",  "number", SetDigits},
    {"--explain", "name",   SetExplained},
};
// clang-format on

bool TakeFlag(Options& options, std::string_view argument) {
  for (const Flag& flag : Flags) {
    if (flag.name != argument) continue;
    flag.set(options);
    return true;
  }
  return false;
}

/// Takes "--name value" and "--name=value". False when `arguments[at]` is no setting.
bool TakeSetting(Options& options, int count, const char* const* arguments, int& at) {
  const std::string_view argument = arguments[at];
  for (const Setting& setting : Settings) {
    if (argument == setting.name) {
      if (++at < count) {
        setting.set(options, arguments[at]);
      } else {
        options.error = "option " + std::string(argument) + " needs a " + setting.needs;
      }
      return true;
    }
    const std::size_t length = setting.name.size();
    if (argument.starts_with("--") && argument.starts_with(setting.name) &&
        argument.substr(length).starts_with('=')) {
      setting.set(options, arguments[at] + length + 1);
      return true;
    }
  }
  return false;
}

}  // namespace

Options ParseOptions(int count, const char* const* arguments) {
  Options options;
  bool onlyFiles = false;
  for (int at = 1; at < count && options.error.empty(); ++at) {
    const std::string_view argument = arguments[at];
    if (onlyFiles || !argument.starts_with('-')) {
      options.programs.push_back({Program::File, arguments[at]});
    } else if (argument == "--") {
      onlyFiles = true;
    } else if (!TakeFlag(options, argument) && !TakeSetting(options, count, arguments, at)) {
      options.error = "unknown option " + std::string(argument);
    }
  }
  return options;
}

}  // namespace kelcalc
