#include "platform/window.h"

#ifndef _WIN32

#include <algorithm>
#include <array>
#include <map>

#include "platform/wrapping.h"

struct KelCursor {
  int number;
};

namespace {

KelCursor SystemCursors[] = {{32512}, {32514}};

/// The cursors that were shown. The last ones are kept in a ring: a save shows cursors, and nothing
/// in it may need memory.
struct CursorRecord {
  HCURSOR current = nullptr;
  std::array<int, 256> numbers = {};
  std::size_t count = 0;  // of all that were ever shown; the ring's next place follows from it
};

CursorRecord Cursors;

struct Window {
  HWND parent;
  RECT rect;
};

/// All windows by their numbers.
struct Desktop {
  std::map<std::uint32_t, Window> windows;
  std::uint32_t lastNumber = 0;

  Window* Find(HWND window) {
    const auto found = windows.find(Number(window));
    return found == windows.end() ? nullptr : &found->second;
  }

  static std::uint32_t Number(HWND window) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
  }
};

Desktop& TheDesktop() {
  static Desktop desktop;
  return desktop;
}

int NumberOf(HCURSOR cursor) { return cursor == nullptr ? 0 : cursor->number; }

/// Where the inside of `window` begins on the screen; false for no such window.
bool FindOrigin(HWND window, POINT& origin) {
  origin = {0, 0};
  while (window != nullptr) {
    const Window* found = TheDesktop().Find(window);
    if (found == nullptr) return false;
    origin = {Sum(origin.x, found->rect.left), Sum(origin.y, found->rect.top)};
    window = found->parent;
  }
  return true;
}

}  // namespace

HCURSOR LoadCursorA(HINSTANCE module, LPCSTR name) {
  if (module != nullptr) return nullptr;
  for (KelCursor& cursor : SystemCursors) {
    if (reinterpret_cast<std::uintptr_t>(name) == static_cast<std::uintptr_t>(cursor.number)) {
      return &cursor;
    }
  }
  return nullptr;
}

HCURSOR SetCursor(HCURSOR cursor) {
  const HCURSOR previous = Cursors.current;
  Cursors.current = cursor;
  Cursors.numbers[Cursors.count++ % Cursors.numbers.size()] = NumberOf(cursor);
  return previous;
}

BOOL GetClientRect(HWND window, RECT* rect) {
  const Window* found = TheDesktop().Find(window);
  if (found == nullptr || rect == nullptr) return 0;
  *rect = {0, 0, Difference(found->rect.right, found->rect.left),
           Difference(found->rect.bottom, found->rect.top)};
  return 1;
}

HWND GetParent(HWND window) {
  const Window* found = TheDesktop().Find(window);
  return found == nullptr ? nullptr : found->parent;
}

int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count) {
  POINT fromOrigin;
  POINT toOrigin;
  if (!FindOrigin(from, fromOrigin) || !FindOrigin(to, toOrigin) || points == nullptr) return 0;
  const POINT moved = {Difference(fromOrigin.x, toOrigin.x), Difference(fromOrigin.y, toOrigin.y)};
  std::for_each(points, points + count, [moved](POINT& point) {
    point = {Sum(point.x, moved.x), Sum(point.y, moved.y)};
  });
  const ULONG low = static_cast<ULONG>(moved.x) & 0xFFFFU;
  const ULONG high = static_cast<ULONG>(moved.y) & 0xFFFFU;
  return static_cast<int>(high << 16U | low);
}

int KelCurrentCursor() { return NumberOf(Cursors.current); }

std::vector<int> KelCursorHistory() {
  const std::size_t kept = std::min(Cursors.count, Cursors.numbers.size());
  std::vector<int> history(kept);
  for (std::size_t i = 0; i < kept; ++i) {
    history[i] = Cursors.numbers[(Cursors.count - kept + i) % Cursors.numbers.size()];
  }
  return history;
}

void KelForgetCursorHistory() { Cursors.count = 0; }

HWND KelMakeWindow(HWND parent, const RECT& rect) {
  Desktop& desktop = TheDesktop();
  if (parent != nullptr && desktop.Find(parent) == nullptr) return nullptr;
  desktop.windows[desktop.lastNumber + 1] = {parent, rect};
  return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(++desktop.lastNumber));
}

int KelPlaceWindow(HWND window, const RECT& rect) {
  Window* found = TheDesktop().Find(window);
  if (found == nullptr) return 0;
  found->rect = rect;
  return 1;
}

void KelDestroyWindow(HWND window) {
  std::map<std::uint32_t, Window>& windows = TheDesktop().windows;
  if (windows.erase(Desktop::Number(window)) == 0) return;
  // A child's number is always greater than its parent's, so one pass upwards finds them all.
  for (auto it = windows.begin(); it != windows.end();) {
    const HWND parent = it->second.parent;
    const bool orphan = parent != nullptr && windows.count(Desktop::Number(parent)) == 0;
    it = orphan ? windows.erase(it) : std::next(it);
  }
}

#endif
