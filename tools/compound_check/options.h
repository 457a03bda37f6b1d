#pragma once

/// What compound_check is told on its command line.

#include <optional>
#include <string>
#include <vector>

struct Options {
  bool list = false;
  bool strict = false;
  bool verbose = false;
  bool help = false;
  bool version = false;
  std::optional<std::string> extract;  // the path of a stream
  std::vector<std::string> files;
};

/// Reads the arguments; on failure `complaint` says what is wrong with them.
bool ReadOptions(const std::vector<std::string>& arguments, Options& options,
                 std::string& complaint);

extern const char* const HelpText;
