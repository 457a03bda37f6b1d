#include "tools/kelcalc/viewer.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
// Needs the one above.
#include <shellapi.h>
#else
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace kelcalc {

#ifdef _WIN32

/// The folder of temporary files is the user's own.
std::string MakePrivateFolder() {
  std::error_code problem;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(problem) /
                                       ("kelcalc-" + std::to_string(GetCurrentProcessId()));
  std::filesystem::create_directory(folder, problem);
  return problem ? "" : folder.string();
}

bool OpenViewer(const std::string& path) {
  constexpr INT_PTR Greatest = 32;  // of the numbers that stand for failures
  const HINSTANCE done =
      ShellExecuteA(nullptr, "open", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(done) > Greatest;
}

#else

namespace {

bool HasDesktop() {
  for (const char* name : {"WAYLAND_DISPLAY", "DISPLAY"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

/// Runs `script` with `argument` as its $0, with the terminal out of its reach. True when it ended
/// with status 0.
bool RunScript(const char* script, const std::string& argument) {
  posix_spawn_file_actions_t files;
  if (posix_spawn_file_actions_init(&files) != 0) return false;
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&files, descriptor, "/dev/null", O_RDWR, 0);
  }
  std::string words[] = {"sh", "-c", script, argument};
  char* const pointers[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                            nullptr};
  pid_t process = 0;
  const int error = posix_spawn(&process, "/bin/sh", &files, nullptr, pointers, environ);
  posix_spawn_file_actions_destroy(&files);
  int status = 1;
  if (error == 0) waitpid(process, &status, 0);
  return status == 0;
}

}  // namespace

std::string MakePrivateFolder() {
  std::error_code problem;
  std::string name = (std::filesystem::temp_directory_path(problem) / "kelcalc-XXXXXX").string();
  return problem || mkdtemp(name.data()) == nullptr ? "" : name;
}

bool OpenViewer(const std::string& path) {
  return HasDesktop() && RunScript("command -v xdg-open || exit 1; xdg-open \"$0\" &", path);
}

#endif

}  // namespace kelcalc
