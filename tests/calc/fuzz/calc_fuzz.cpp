// Fuzz target: any bytes as a program, run from memory and as a file.
//
// A program may write and read files, so the target works in a scratch folder under the current
// one. A program that names files and has a slash, which alone leads out of a folder, is passed
// over. The number of steps is bounded: a file that reads itself twice would otherwise double at
// every level.

#include <kelcalc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace {

constexpr std::uint64_t MostSteps = 20000;
constexpr rlim_t LargestFile = 1 << 20;

bool Prepare() {
  static char folder[] = "scratch.XXXXXX";
  if (mkdtemp(folder) == nullptr || chdir(folder) != 0) std::abort();
  std::atexit([] { std::filesystem::remove_all(std::filesystem::path("..") / folder); });
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large fails to be written
  const rlimit limit{LargestFile, LargestFile};
  return setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

template <typename RunIt>
void Run(const RunIt& runIt) {
  kel::Calculator calculator;
  calculator.LimitSteps(MostSteps);
  runIt(calculator);
  for (const auto& file : std::filesystem::directory_iterator(".")) {
    std::filesystem::remove(file.path());
  }
}

bool Has(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool prepared = Prepare();
  if (!prepared) std::abort();
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if ((Has(text, ";write") || Has(text, ";read")) && Has(text, "/")) return -1;
  Run([&](kel::Calculator& calculator) { calculator.Run(text, "fuzz"); });
  std::ofstream("program", std::ios::binary) << text;
  Run([](kel::Calculator& calculator) { calculator.RunFile("program"); });
  return 0;
}
