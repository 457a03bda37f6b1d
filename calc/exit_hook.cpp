#include "calc/exit_hook.h"

#include <cstdlib>
#include <utility>

namespace {

void EndProcess(int status) { std::exit(status); }

constinit CaExitHook CurrentHook = EndProcess;

}  // namespace

CaExitHook SetExitHook(CaExitHook hook) {
  return std::exchange(CurrentHook, hook == nullptr ? EndProcess : hook);
}

void CallExitHook(int status) { CurrentHook(status); }
