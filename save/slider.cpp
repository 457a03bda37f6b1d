/// Where the thumb of a slider is, from positions to pixels and back.

#include <kelsave.h>
#include <cstdint>
#include <limits>

#include "platform/window.h"
#include "platform/wrapping.h"

static_assert(std::numeric_limits<double>::is_iec559, "dividing by zero gives no finite number");

namespace {

bool Snaps(int mode) { return mode == 0 || mode == 1; }

/// `position` brought toward zero to a multiple of `step`.
int Snapped(int position, int step) { return Difference(position, Remainder(position, step)); }

/// The lower bound comes first, so crossed bounds give the upper one.
int Clamped(int position, const SliderRecord& slider) {
  if (position < slider.lower) position = slider.lower;
  if (position > slider.upper) position = slider.upper;
  return position;
}

int InclusiveWidth(const RECT& rect) {
  return Sum(Magnitude(Difference(static_cast<std::int32_t>(rect.right),
                                  static_cast<std::int32_t>(rect.left))),
             1);
}

/// Fills `rect` with the inside of `window` in the coordinates of its parent.
void RectInParent(HWND window, RECT* rect) {
  GetClientRect(window, rect);
  POINT corners[2] = {{rect->left, rect->top}, {rect->right, rect->bottom}};
  MapWindowPoints(window, GetParent(window), corners, 2);
  *rect = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
}

/// T + 1 - H, with T and H the widths of the track and of the thumb.
int SpareWidth(HWND trackWindow, HWND thumbWindow, RECT* track, RECT* thumb) {
  GetClientRect(trackWindow, track);
  RectInParent(thumbWindow, thumb);
  return Difference(Sum(InclusiveWidth(*track), 1), InclusiveWidth(*thumb));
}

/// Half a step in pixels, so that snapping afterwards finds the nearest step, not the lower one.
int HalfStep(int usable, int step, int range) {
  return range == 0 ? 0 : Quotient(Product(usable, step), Product(2, range));
}

/// The position at `pixels` of `usable`. A width of zero leaves no finite number, for which
/// Truncated has the most negative one; the range then makes `lower` of it.
int PositionAt(int pixels, int usable, int range, int lower) {
  if (usable < 0) return 0;
  const double product = static_cast<double>(pixels) * static_cast<double>(range);
  return Truncated(static_cast<double>(lower) + product / static_cast<double>(usable));
}

}  // namespace

int SetKelProcess(SliderRecord* slider, int mode, int newPosition, int step, int snap) {
  const int oldPosition = slider->position;
  const bool snapping = snap != 0 && Snaps(mode);
  slider->position = Clamped(snapping ? Snapped(newPosition, step) : newPosition, *slider);
  return slider->position != oldPosition ? 1 : 0;
}

// Deliberate: the width is that of ReviseKelProcess for a margin of 16, but without its lower bound
// of 1: it may be zero or negative. Held by Adjust in slider_test.cpp.
int AdjustKelProcess(SliderRecord* slider, int mode, int pixels, int step, RECT* track,
                     RECT* thumb) {
  const int range = Difference(slider->upper, slider->lower);
  const int spare = SpareWidth(slider->trackWindow, slider->thumbWindow, track, thumb);
  const int usable = Difference(spare, 31);
  if (Snaps(mode)) pixels = Sum(pixels, HalfStep(usable, step, range));
  const int position = PositionAt(pixels, usable, range, slider->lower);
  return Clamped(Snaps(mode) ? Snapped(position, step) : position, *slider);
}

int ReviseKelProcess(HWND trackWindow, HWND thumbWindow, RECT* track, RECT* thumb, int margin) {
  const int spare = SpareWidth(trackWindow, thumbWindow, track, thumb);
  const int usable = Difference(Sum(spare, 1), Product(2, margin));
  return usable <= 0 ? 1 : usable;
}
