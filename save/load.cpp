/// What happens when the library is loaded and unloaded.

#ifdef _WIN32

#include <windows.h>

/// Answers success to everything. Threads that come and go are none of the library's business.
/// The registered SaveInterface is left alone at unload: it belongs to the host.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  return TRUE;
}

#endif
