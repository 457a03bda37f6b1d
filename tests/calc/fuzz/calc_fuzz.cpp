// Fuzz target: any bytes as a program, run from memory and as a file.
//
// A program may write and read files, so the target works in a scratch folder under the current
// one, and every open of the engine passes a guard that knows plain file names only and bounds how
// many files one input may open: a file that reads itself twice would otherwise double at every
// level.

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "calc/interpreter.h"
#include "calc/run.h"

namespace {

constexpr int MostOpens = 400;  // more than the deepest nesting needs
constexpr rlim_t LargestFile = 1 << 20;

bool guarded = false;
int opens = 0;

bool Refused(const char* path) {
  if (!guarded) return false;
  if (std::strchr(path, '/') == nullptr && path[0] != '.' && opens++ < MostOpens) return false;
  errno = EACCES;
  return true;
}

std::FILE* discarded = nullptr;

bool Prepare() {
  discarded = std::fopen("/dev/null", "w");
  static char folder[] = "scratch.XXXXXX";
  if (discarded == nullptr || mkdtemp(folder) == nullptr || chdir(folder) != 0) std::abort();
  std::atexit([] { std::filesystem::remove_all(std::filesystem::path("..") / folder); });
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large fails to be written
  const rlimit limit{LargestFile, LargestFile};
  return setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

void RemoveWrittenFiles() {
  for (const auto& file : std::filesystem::directory_iterator(".")) {
    std::filesystem::remove(file.path());
  }
}

template <typename Runner>
void RunGuarded(Runner run) {
  CaInterpreter interpreter;
  interpreter.output = discarded;
  interpreter.errors = discarded;
  opens = 0;
  guarded = true;
  run(interpreter);
  guarded = false;
}

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the linker gives these names
std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __real_fopen64(const char* path, const char* mode);
int __real_open(const char* path, int flags, mode_t mode);
int __real_open64(const char* path, int flags, mode_t mode);

std::FILE* __wrap_fopen(const char* path, const char* mode) {
  return Refused(path) ? nullptr : __real_fopen(path, mode);
}

std::FILE* __wrap_fopen64(const char* path, const char* mode) {
  return Refused(path) ? nullptr : __real_fopen64(path, mode);
}

// The mode is passed on whether it is there or not: without O_CREAT nobody looks at it.
int __wrap_open(const char* path, int flags, mode_t mode) {
  return Refused(path) ? -1 : __real_open(path, flags, mode);
}

int __wrap_open64(const char* path, int flags, mode_t mode) {
  return Refused(path) ? -1 : __real_open64(path, flags, mode);
}
// NOLINTEND(bugprone-reserved-identifier)

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool prepared = Prepare();
  if (!prepared) std::abort();
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  RunGuarded([&](CaInterpreter& interpreter) { RunText(interpreter, text, "fuzz"); });
  RemoveWrittenFiles();

  std::FILE* file = std::fopen("program", "wb");
  if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) {
    std::abort();
  }
  RunGuarded([](CaInterpreter& interpreter) { RunFile(interpreter, "program"); });
  RemoveWrittenFiles();
  return 0;
}
}
