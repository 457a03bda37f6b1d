#pragma once

/// The texts that an executable carries under numbers.
/// Stands in for that part of <windows.h>; there it gives way to it, and the texts are the string
/// resources of the host's executable.

#ifdef _WIN32

#include <windows.h>

#else

#include "platform/base_types.h"
#include "platform/window.h"

/// The module called `name`; only null, the host's executable, is known here.
KEL_PLATFORM_API HMODULE GetModuleHandleA(LPCSTR name);

/// Copies the text with the number `id` into `buffer`, cut to `size` - 1 bytes and terminated.
/// Returns the number of bytes copied without the terminator. 0: there is no such text or no such
/// module, and a buffer of any size holds the empty text; or there is no buffer.
KEL_PLATFORM_API int LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int size);

/// The host's texts. Three are there from the start, and a host that says nothing uses them:
///   60121  "KelBack"                 what the names begin with that are never backed up
///   60122  "KelBackup.bak"           the name of the backup
///   63348  "KelBackupAlternate.bak"  the other name of the backup
/// The first one covers the other two, so that saving over a backup does not replace it by itself.
/// They belong to the user-interface thread. Without memory for a change these functions throw
/// std::bad_alloc and change nothing.

/// Makes `text` the text with the number `id`; a copy is kept. Null removes it.
KEL_PLATFORM_API void KelSetHostString(UINT id, const char* text);

/// Removes the text with the number `id`.
KEL_PLATFORM_API void KelRemoveHostString(UINT id);

/// Brings back the table as it was at the start.
KEL_PLATFORM_API void KelResetHostStrings();

#endif
