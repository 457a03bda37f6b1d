// compound_check: tells whether compound files are whole, and what is in them.

#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compound_check/compound_checker.h"
#include "tools/compound_check/compound_names.h"

namespace {

enum Status { AllValid = 0, SomeInvalid = 1, Unusable = 2 };

constexpr const char* HelpText =
    "Usage: compound_check [-l] FILE...\n"
    "Checks the structure of compound files, versions 3 and 4, and prints what is wrong.\n"
    "\n"
    "  -l       list what each FILE holds: path, size in bytes, type\n"
    "  --       what follows are files, whatever they are called\n"
    "  --help   show this help and end\n"
    "\n"
    "Exit status: 0 when every FILE is valid; 1 when one is not; 2 when one could not be read\n"
    "or the arguments are wrong.\n";

int Refuse(const std::string& complaint) {
  std::fprintf(stderr, "compound_check: %s\nTry 'compound_check --help'.\n", complaint.c_str());
  return Unusable;
}

const char* TypeName(compound::EntryType type) {
  switch (type) {
    case compound::Root:
      return "root";
    case compound::Storage:
      return "storage";
    case compound::Stream:
      return "stream";
    default:
      return "unknown";
  }
}

/// UTF-8 that a terminal shows as it is: control characters become \xNN.
std::string Printable(std::u16string_view text) {
  std::string shown;
  for (const char c : compound::Utf8(text)) {
    const unsigned byte = static_cast<unsigned char>(c);
    char escaped[8] = {c};
    if (byte < 0x20 || byte == 0x7F) std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
    shown += escaped;
  }
  return shown;
}

void List(const std::vector<compound::Entry>& entries) {
  for (const compound::Entry& entry : entries) {
    const unsigned long long size = entry.size;
    std::printf("/%s\t%llu\t%s\n", Printable(entry.path).c_str(), size, TypeName(entry.type));
  }
}

Status CheckOne(const std::string& name, bool list) {
  std::ifstream file(name, std::ios::binary);
  // A folder can be opened, but not read.
  if (!file || (file.peek(), file.bad())) {
    std::fprintf(stderr, "compound_check: cannot read %s\n", name.c_str());
    return Unusable;
  }
  const compound::Findings findings = compound::Check(file);
  std::printf("%s: %s\n", name.c_str(), findings.Valid() ? "valid" : "not valid");
  std::fputs(findings.Text().c_str(), stdout);
  if (list) List(findings.entries);
  return findings.Valid() ? AllValid : SomeInvalid;
}

int Run(const std::vector<std::string>& arguments) {
  std::vector<std::string> files;
  bool list = false;
  bool onlyFiles = false;
  for (const std::string& argument : arguments) {
    if (onlyFiles || argument.empty() || argument[0] != '-') {
      files.push_back(argument);
    } else if (argument == "--") {
      onlyFiles = true;
    } else if (argument == "-l") {
      list = true;
    } else if (argument == "--help") {
      return std::fputs(HelpText, stdout) < 0 ? Unusable : AllValid;
    } else {
      return Refuse("unknown option " + argument);
    }
  }
  if (files.empty()) return Refuse("no file is given");
  Status worst = AllValid;
  for (const std::string& file : files) {
    const Status status = CheckOne(file, list);
    if (status > worst) worst = status;
  }
  return worst;
}

}  // namespace

int main(int count, char** words) {
  try {
    const int status = Run(std::vector<std::string>(words + (count > 0), words + count));
    return std::fflush(stdout) == 0 ? status : Unusable;
  } catch (const std::exception& problem) {
    return Refuse(problem.what());
  }
}
