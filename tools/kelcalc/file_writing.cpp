#include "tools/kelcalc/file_writing.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace kelcalc {
namespace {

namespace fs = std::filesystem;

std::string Write(const std::string& path, const std::string& text) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return std::strerror(errno);
  errno = 0;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const int reason = errno;
  if (std::fclose(file) == 0 && written) return "";
  return std::strerror(written ? errno : reason);
}

}  // namespace

std::string WriteFile(const std::string& path, const std::string& text) {
  std::error_code problem;
  const fs::file_status before = fs::status(path, problem);
  // What is no file, such as a pipe, cannot be replaced.
  if (fs::exists(before) && !fs::is_regular_file(before)) return Write(path, text);
  // Behind a link the file itself is replaced.
  const fs::path target = fs::exists(before) ? fs::canonical(path, problem) : fs::path(path);
  const std::string fresh = target.string() + ".new";
  std::string reason = Write(fresh, text);
  if (reason.empty() && fs::exists(before)) fs::permissions(fresh, before.permissions(), problem);
  if (reason.empty()) {
    fs::rename(fresh, target, problem);
    if (problem) reason = problem.message();
  }
  if (!reason.empty()) fs::remove(fresh, problem);
  return reason;
}

}  // namespace kelcalc
