#include "platform/window.h"

#ifndef _WIN32

#include <algorithm>
#include <deque>
#include <map>

struct KelCursor {
  int number;
};

namespace {

constexpr int ArrowNumber = 32512;
constexpr int WaitNumber = 32514;
constexpr std::size_t HistoryLimit = 256;

KelCursor SystemCursors[] = {{ArrowNumber}, {WaitNumber}};

struct Window {
  HWND parent;
  RECT rect;
};

/// Everything the stand-ins remember.
struct Desktop {
  HCURSOR cursor = nullptr;
  std::deque<int> cursorHistory;
  std::map<std::uint32_t, Window> windows;
  std::uint32_t lastNumber = 0;

  Window* Find(HWND window) {
    const auto found = windows.find(window.Number());
    return found == windows.end() ? nullptr : &found->second;
  }
};

Desktop& TheDesktop() {
  static Desktop desktop;
  return desktop;
}

int NumberOf(HCURSOR cursor) { return cursor == nullptr ? 0 : cursor->number; }

// Coordinates wrap in 32 bits, as the system's do.
LONG Sum(LONG a, LONG b) {
  return static_cast<LONG>(static_cast<ULONG>(a) + static_cast<ULONG>(b));
}
LONG Difference(LONG a, LONG b) {
  return static_cast<LONG>(static_cast<ULONG>(a) - static_cast<ULONG>(b));
}

/// Where the inside of `window` begins on the screen; false for no such window.
bool FindOrigin(HWND window, POINT& origin) {
  origin = {0, 0};
  while (window) {
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
  Desktop& desktop = TheDesktop();
  const HCURSOR previous = desktop.cursor;
  desktop.cursor = cursor;
  desktop.cursorHistory.push_back(NumberOf(cursor));
  if (desktop.cursorHistory.size() > HistoryLimit) desktop.cursorHistory.pop_front();
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
  return found == nullptr ? HWND() : found->parent;
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

int KelCurrentCursor() { return NumberOf(TheDesktop().cursor); }

std::vector<int> KelCursorHistory() {
  const std::deque<int>& history = TheDesktop().cursorHistory;
  return {history.begin(), history.end()};
}

void KelForgetCursorHistory() { TheDesktop().cursorHistory.clear(); }

HWND KelMakeWindow(HWND parent, const RECT& rect) {
  Desktop& desktop = TheDesktop();
  if (parent && desktop.Find(parent) == nullptr) return nullptr;
  const HWND window(++desktop.lastNumber);
  desktop.windows[window.Number()] = {parent, rect};
  return window;
}

int KelPlaceWindow(HWND window, const RECT& rect) {
  Window* found = TheDesktop().Find(window);
  if (found == nullptr) return 0;
  found->rect = rect;
  return 1;
}

void KelDestroyWindow(HWND window) {
  std::map<std::uint32_t, Window>& windows = TheDesktop().windows;
  if (windows.erase(window.Number()) == 0) return;
  // A child's number is always greater than its parent's, so one pass upwards finds them all.
  for (auto it = windows.begin(); it != windows.end();) {
    const HWND parent = it->second.parent;
    const bool orphan = parent && windows.count(parent.Number()) == 0;
    it = orphan ? windows.erase(it) : std::next(it);
  }
}

#endif
