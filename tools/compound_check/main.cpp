// compound_check: tells whether compound files are whole, and what is in them.

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#endif

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tools/compound_check/compound_checker.h"
#include "tools/compound_check/compound_names.h"
#include "tools/compound_check/options.h"

namespace fs = std::filesystem;

namespace {

enum Status { Whole = 0, Wrong = 1, Unusable = 2 };

Status Refuse(const std::string& complaint) {
  std::fprintf(stderr, "compound_check: %s\n", complaint.c_str());
  return Unusable;
}

/// Opens a plain file; of anything else, reading might never come to an end.
bool Open(const std::string& name, std::ifstream& file) {
  const fs::path path(std::u8string(name.begin(), name.end()));
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  std::string problem;
  if (status.type() == fs::file_type::not_found) {
    problem = "there is no such file";
  } else if (error) {
    problem = error.message();
  } else if (!fs::is_regular_file(status)) {
    problem = fs::is_directory(status) ? "it is a folder" : "it is no plain file";
  } else {
    file.open(path, std::ios::binary);
    if (!file) problem = std::strerror(errno);
  }
  if (!problem.empty()) Refuse("cannot read " + name + ": " + problem);
  return problem.empty();
}

const char* TypeName(compound::EntryType type) {
  return type == compound::Root ? "root" : type == compound::Storage ? "storage" : "stream";
}

void List(const std::vector<compound::Entry>& entries) {
  for (const compound::Entry& entry : entries) {
    const unsigned long long size = entry.size;
    std::printf("/%s\t%llu\t%s\n", compound::Printable(entry.path).c_str(), size,
                TypeName(entry.type));
  }
}

Status CheckOne(const std::string& name, const Options& options) {
  std::ifstream file;
  if (!Open(name, file)) return Unusable;
  const compound::Findings findings = compound::Check(file);
  const bool unusual = options.strict && !findings.complaints.empty();
  std::printf("%s: %s\n", name.c_str(),
              findings.IsDamaged() ? "damaged"
              : unusual            ? "unusual"
                                   : "whole");
  for (const compound::Complaint& complaint : findings.complaints) {
    const bool damaged = complaint.grade == compound::Grade::Damaged;
    if (!damaged && !options.strict) continue;
    std::printf("  %s%s%s\n", damaged ? "" : "unusual: ", complaint.text.c_str(),
                options.verbose ? compound::EvidenceText(complaint.evidence).c_str() : "");
  }
  if (options.list) List(findings.entries);
  return findings.IsDamaged() || unusual ? Wrong : Whole;
}

/// The entry of this path, with or without the slash before it, as -l prints it or as it is.
const compound::Entry* FindEntry(const std::vector<compound::Entry>& entries,
                                 std::string_view path) {
  if (!path.empty() && path[0] == '/') path.remove_prefix(1);
  for (const compound::Entry& entry : entries) {
    if (compound::Utf8(entry.path) == path || compound::Printable(entry.path) == path) {
      return &entry;
    }
  }
  return nullptr;
}

Status Extract(const std::string& path, const std::string& name) {
  std::ifstream file;
  if (!Open(name, file)) return Unusable;
  const compound::Findings findings = compound::Check(file);
  const compound::Entry* entry = FindEntry(findings.entries, path);
  if (entry == nullptr) return Refuse("there is no stream " + path + " in " + name);
  if (entry->type != compound::Stream) return Refuse(path + " is a storage, not a stream");
#ifdef _WIN32
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  const bool written = compound::ReadStream(file, *entry, [](std::string_view piece) {
    return std::fwrite(piece.data(), 1, piece.size(), stdout) == piece.size();
  });
  if (std::ferror(stdout) != 0) return Refuse(std::string("cannot write: ") + std::strerror(errno));
  if (written && !entry->damaged) return Whole;
  std::fprintf(stderr, "compound_check: %s is damaged; see compound_check %s\n", path.c_str(),
               name.c_str());
  return Wrong;
}

int Run(const std::vector<std::string>& arguments) {
  Options options;
  std::string complaint;
  if (!ReadOptions(arguments, options, complaint)) {
    return Refuse(complaint + "\nTry 'compound_check --help'.");
  }
  if (options.help) return std::fputs(HelpText, stdout) < 0 ? Unusable : Whole;
  if (options.version) return std::puts("compound_check " KEL_VERSION) < 0 ? Unusable : Whole;
  if (options.extract) return Extract(*options.extract, options.files[0]);
  Status worst = Whole;
  for (const std::string& file : options.files) {
    const Status status = CheckOne(file, options);
    if (status > worst) worst = status;
  }
  return worst;
}

/// In UTF-8, also on Windows, where the words of main are in the process's code page.
std::vector<std::string> Arguments(int count, char** words) {
#ifdef _WIN32
  static_cast<void>(words);
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; wide != nullptr && i < count; ++i) {
    const std::u8string word = fs::path(wide[i]).u8string();
    arguments.emplace_back(word.begin(), word.end());
  }
  LocalFree(wide);
  return arguments;
#else
  return {words + (count > 0), words + count};
#endif
}

}  // namespace

int main(int count, char** words) {
  try {
    const int status = Run(Arguments(count, words));
    if (std::fflush(stdout) == 0) return status;
    return Refuse(std::string("cannot write: ") + std::strerror(errno));
  } catch (const std::exception& problem) {
    return Refuse(problem.what());
  }
}
