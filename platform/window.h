#pragma once

/// Cursors and windows, as far as a save and a slider need them.
/// Stands in for that part of <windows.h>; there it gives way to it.
///
/// Off Windows nothing is drawn. The cursor is a record that can be looked at, the windows are a
/// small tree that a host or a test builds with the `Kel...` functions at the end. All of it
/// belongs to the user-interface thread: there are no locks.

#ifdef _WIN32

#include <windows.h>

using KelWindowWord = HWND;

#else

#include <cstdint>
#include <vector>

#include "platform/base_types.h"

/// Handles are pointers to records nobody may look into. The one of a window holds a number of 32
/// bits and no address, so that a record can keep it in one word (KelWindowWord).
using HWND = struct HWND__*;  // NOLINT(bugprone-reserved-identifier): the system's own name
using HCURSOR = struct KelCursor*;
using HINSTANCE = struct KelModule*;
using HMODULE = HINSTANCE;

/// A window's handle in a record that is shared with a host: 32 bits on every machine. Read and
/// assigned as the handle itself. A plain value; it owns nothing.
class KelWindowWord {
 public:
  KelWindowWord() = default;
  KelWindowWord(HWND window)  // NOLINT(google-explicit-constructor): stands for the handle
      : number_(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window))) {}
  operator HWND() const {  // NOLINT(google-explicit-constructor): as above
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number_));
  }

 private:
  std::uint32_t number_;
};
static_assert(sizeof(KelWindowWord) == 4);

struct POINT {
  LONG x;
  LONG y;
};

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

/// Names of the system's cursors: a number in place of a text.
inline const char* const IDC_ARROW = reinterpret_cast<const char*>(std::uintptr_t{32512});
inline const char* const IDC_WAIT = reinterpret_cast<const char*>(std::uintptr_t{32514});

/// The cursor that `name` stands for, with `module` null one of the system's; null when there is
/// no such cursor. Only IDC_ARROW and IDC_WAIT exist here.
KEL_PLATFORM_API HCURSOR LoadCursorA(HINSTANCE module, LPCSTR name);

/// Shows `cursor` (null hides it) and returns the one that was shown before.
KEL_PLATFORM_API HCURSOR SetCursor(HCURSOR cursor);

/// Fills `rect` with the inside of `window` in its own coordinates: left and top are 0.
/// Nonzero on success; 0 for no such window or no `rect`, which is then left as it was.
KEL_PLATFORM_API BOOL GetClientRect(HWND window, RECT* rect);

/// The parent of `window`; null for a top-level window and for no such window.
KEL_PLATFORM_API HWND GetParent(HWND window);

/// Converts `count` points from the coordinates of `from` to those of `to`; null is the screen.
/// The result holds the distance moved: x in the low 16 bits, y in the high ones. For no such
/// window it is 0 and the points are left as they were.
KEL_PLATFORM_API int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count);

/// What a host or a test does with the stand-ins.
/// The cursor that is shown as the number of its name (32512, 32514), 0 when none is.
KEL_PLATFORM_API int KelCurrentCursor();

/// The numbers of the cursors shown, oldest first, the current one last. It starts empty and
/// forgets the oldest after 256.
KEL_PLATFORM_API std::vector<int> KelCursorHistory();
KEL_PLATFORM_API void KelForgetCursorHistory();

/// A new window inside `parent` (null: on the screen). `rect` is its place in the parent's
/// coordinates; it has no border. Null when `parent` is no window.
KEL_PLATFORM_API HWND KelMakeWindow(HWND parent, const RECT& rect);

/// Moves and resizes `window` within its parent. Returns 1, or 0 for no such window.
KEL_PLATFORM_API int KelPlaceWindow(HWND window, const RECT& rect);

/// Removes `window` and everything inside it; its number is not used again.
KEL_PLATFORM_API void KelDestroyWindow(HWND window);

#endif
