#include "tools/kelcalc/options.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "tools/kelcalc/number_style.h"
#include "tools/view/forms.h"

namespace kelcalc {
namespace {

void SetTask(Options& options, Task task) {
  if (options.task == Task::Run) options.task = task;
}

void AddText(Options& options, const char* text) {
  options.programs.push_back({Program::Text, text});
}

void AddStandardInput(Options& options, const char*) {
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

void SetJson(Options& options, const char* path) {
  options.json = path;
  if (options.json.empty()) options.error = "--json takes the name of a file, or -";
}

void SetExplained(Options& options, const char* name) {
  if (options.task == Task::Run) options.explained = name;
  SetTask(options, Task::Explain);
}

void AddPicture(Options& options, const char* file) {
  if (!kelview::KnowsForm(file)) {
    options.error = std::string("--view needs a name that ends in ") + kelview::KnownEndings +
                    ", not '" + file + "'";
  }
  options.pictures.emplace_back(file);
}

/// One option, once for all: how it is written, what it needs, what is told of it, what it does.
struct Option {
  std::string_view brief;  // "-x", or empty
  std::string_view name;   // "--name", or empty
  const char* argument;    // what it needs, or null
  const char* help;        // a further line begins behind each newline
  void (*set)(Options&, const char* value);
};

// clang-format off
constexpr Option AllOptions[] = {
    {"-e", "", "TEXT", "run TEXT", AddText},
    {"-",  "", nullptr, "run standard input", AddStandardInput},
    {"-i", "", nullptr,
     "talk to a person, whatever standard input and output are; after the\n"
     "programs, if there are any",
     [](Options& options, const char*) { options.interactive = true; }},
    {"", "--no-stack", nullptr, "do not show the stack after each line of a session",
     [](Options& options, const char*) { options.showStack = false; }},
    {"", "--where", nullptr,
     "after each failure, say where it was and why (default in a session)",
     [](Options& options, const char*) { options.where = Choice::On; }},
    {"", "--no-where", nullptr, "do not",
     [](Options& options, const char*) { options.where = Choice::Off; }},
    {"", "--warn", nullptr,
     "say what is no failure and seldom meant, as a name without a value\n"
     "(default in a session)",
     [](Options& options, const char*) { options.warn = Choice::On; }},
    {"", "--no-warn", nullptr, "do not",
     [](Options& options, const char*) { options.warn = Choice::Off; }},
    {"", "--strict", nullptr, "exit with status 1 when anything failed",
     [](Options& options, const char*) { options.strict = true; }},
    {"", "--stop", nullptr,
     "the same, and end at the first failure; no picture or JSON is written\n"
     "then",
     [](Options& options, const char*) { options.stop = true; }},
    {"", "--digits", "N", "print numbers with N significant digits (1 to 17)", SetDigits},
    {"", "--view", "FILE",
     "when the programs have ended, write a picture of the variables\n"
     "and the stack: a drawing (.svg), a page that turns (.html) or a\n"
     "model (.glb), as the name of FILE ends; may be repeated",
     AddPicture},
    {"", "--view-from", "NAME", "in pictures, let vectors start at the point NAME",
     [](Options& options, const char* name) { options.picturesFrom = name; }},
    {"", "--exact", nullptr, "let ;write keep every digit of a number",
     [](Options& options, const char*) { options.exact = true; }},
    {"", "--json", "FILE",
     "when the programs have ended, write stack and variables with their\n"
     "types as JSON to FILE (-: standard output)",
     SetJson},
    {"", "--list", nullptr, "list all operators and functions",
     [](Options& options, const char*) { SetTask(options, Task::List); }},
    {"", "--explain", "NAME",
     "explain an operator or a function: what it takes and gives, an\n"
     "example; a type; or a topic, such as stack",
     SetExplained},
    {"-h", "--help", nullptr, "print this",
     [](Options& options, const char*) { SetTask(options, Task::Help); }},
    {"-V", "--version", nullptr, "print the version",
     [](Options& options, const char*) { SetTask(options, Task::Version); }},
};
// clang-format on

/// What `argument` sets: an option and the value that is written into the same argument, if any.
struct Match {
  const Option* option = nullptr;
  const char* value = nullptr;
};

/// Takes "-x", "-xVALUE", "--name" and "--name=VALUE".
Match FindOption(const char* argument) {
  const std::string_view text = argument;
  for (const Option& option : AllOptions) {
    if (text == option.brief || text == option.name) return {&option, nullptr};
    if (option.argument == nullptr) continue;
    if (!option.brief.empty() && text.starts_with(option.brief)) return {&option, argument + 2};
    const std::size_t length = option.name.size();
    if (length > 0 && text.starts_with(option.name) && text.substr(length).starts_with('=')) {
      return {&option, argument + length + 1};
    }
  }
  return {};
}

/// Takes the option at `at` and, where it is the next argument, its value.
void TakeOption(Options& options, int count, const char* const* arguments, int& at) {
  const std::string argument = arguments[at];
  Match match = FindOption(arguments[at]);
  if (match.option == nullptr) {
    options.error = "unknown option " + argument;
    return;
  }
  if (match.option->argument != nullptr && match.value == nullptr) {
    if (++at == count) {
      options.error = "option " + argument + " needs " + match.option->argument;
      return;
    }
    match.value = arguments[at];
  }
  match.option->set(options, match.value);
}

constexpr std::size_t HelpColumn = 20;

std::string OptionHelp(const Option& option) {
  std::string text = "  ";
  text += option.brief;
  if (!option.brief.empty() && !option.name.empty()) text += ", ";
  text += option.name;
  if (option.argument != nullptr) text += std::string(" ") + option.argument;
  text.resize(text.size() < HelpColumn ? HelpColumn : text.size() + 1, ' ');
  for (const char c : std::string_view(option.help)) {
    text += c;
    if (c == '\n') text.append(HelpColumn, ' ');
  }
  return text + '\n';
}

}  // namespace

std::string UsageText() {
  std::string text =
      "usage: kelcalc [OPTION]... [FILE | - | -e TEXT]...\n"
      "Runs programs in a postfix language for 3-D geometry: the files, texts and standard input\n"
      "(-) in their order, on one stack; without any of them, standard input.\n"
      "\n";
  for (const Option& option : AllOptions) text += OptionHelp(option);
  return text;
}

Options ParseOptions(int count, const char* const* arguments) {
  Options options;
  bool onlyFiles = false;
  for (int at = 1; at < count && options.error.empty(); ++at) {
    const std::string_view argument = arguments[at];
    if (onlyFiles || !argument.starts_with('-')) {
      options.programs.push_back({Program::File, arguments[at]});
    } else if (argument == "--") {
      onlyFiles = true;
    } else {
      TakeOption(options, count, arguments, at);
    }
  }
  return options;
}

}  // namespace kelcalc
