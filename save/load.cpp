/// What happens when the library is loaded and unloaded.

#include "calc/object.h"
#include "geometry/vector.h"

namespace {

// The calculator's two shared objects live in the library from load to unload, set up and destroyed
// by the run-time as in any program. Naming them here is what brings them in.
[[gnu::used]] const CaValue* const SharedValue = &NothingValue;
[[gnu::used]] const CyVector* const SharedOrigin = &Origin;

}  // namespace

#ifdef _WIN32

#include <windows.h>

/// Answers success to everything. Threads that come and go are none of the library's business.
/// The registered SaveInterface is left alone at unload: it belongs to the host.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  return TRUE;
}

#endif
