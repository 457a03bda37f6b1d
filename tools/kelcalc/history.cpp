#include "tools/kelcalc/history.h"

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace kelcalc {
namespace {

namespace fs = std::filesystem;

/// Makes the folders above `path` and, if it is new, an empty file there; folders made here and
/// the file are for their owner only.
void MakePrivateFile(const fs::path& path) {
  std::error_code ignored;
  const fs::path folder = path.parent_path();
  if (fs::create_directories(folder, ignored)) {
    fs::permissions(folder, fs::perms::owner_all, ignored);
  }
  if (fs::exists(path, ignored)) return;
  std::ofstream(path, std::ios::app | std::ios::binary).close();
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, ignored);
}

fs::path AbsolutePathIn(const char* variable) {
  const char* text = std::getenv(variable);
  const fs::path path = text != nullptr ? text : "";
  return path.is_absolute() ? path : fs::path();
}

}  // namespace

std::string HistoryPath() {
  fs::path state = AbsolutePathIn("XDG_STATE_HOME");
  if (state.empty()) {
    const fs::path home = AbsolutePathIn("HOME");
    std::error_code ignored;
    if (home.empty() || !fs::is_directory(home, ignored)) return "";
    state = home / ".local" / "state";
  }
  return (state / "kelcalc" / "history").string();
}

History::History(std::string file) : path(std::move(file)) {
  if (!path.empty()) Load();
}

void History::Load() {
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  file.close();
  if (lines.size() <= MostLines) return;
  lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(MostLines));
  Rewrite();
}

/// Replaces the file by `lines` in one step, so that it is never half a history.
void History::Rewrite() const {
  const std::string fresh = path + ".new";
  MakePrivateFile(fresh);
  std::ofstream file(fresh, std::ios::trunc | std::ios::binary);
  for (const std::string& line : lines) file << line << '\n';
  file.close();
  std::error_code ignored;
  if (file.good()) {
    fs::rename(fresh, path, ignored);
  } else {
    fs::remove(fresh, ignored);
  }
}

void History::Add(const std::string& line) {
  if (line.find_first_not_of(" \t\r") == std::string::npos) return;
  if (!lines.empty() && lines.back() == line) return;
  lines.push_back(line);
  if (path.empty()) return;
  MakePrivateFile(path);
  std::ofstream file(path, std::ios::app | std::ios::binary);
  file << line << '\n';
}

}  // namespace kelcalc
