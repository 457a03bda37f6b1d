#include <gtest/gtest.h>

#include <kelsave.h>
#include <array>
#include <climits>

#include "platform/window.h"

namespace {

// The columns: bounds and position before, mode, new position, step, snap; position after, result.
TEST(Slider, Set) {
  const int rows[][9] = {
      {0, 100, 0, 0, 47, 10, 1, 40, 1},  {0, 100, 40, 1, 47, 10, 1, 40, 0},
      {0, 100, 0, -1, 47, 10, 1, 47, 1}, {-100, 100, 0, 0, -7, 5, 1, -5, 1},
      {-3, 100, 0, 0, -7, 5, 1, -3, 1},  {0, 95, 0, 0, 99, 10, 1, 90, 1},
      {10, 5, 0, 2, 7, 1, 0, 5, 1},  // crossed bounds
      {0, 100, 0, 0, 47, 0, 1, 47, 1},   {INT_MIN, INT_MAX, 0, 0, INT_MIN, -1, 1, INT_MIN, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    const auto& [lower, upper, old, mode, position, step, snap, stored, changed] = row;
    SliderRecord slider = {{}, old, lower, upper, nullptr, nullptr};
    EXPECT_EQ(SetKelProcess(&slider, mode, position, step, snap), changed);
    EXPECT_EQ(slider.position, stored);
  }
}

#ifndef _WIN32

/// A dialog with a track 5 pixels in and a thumb 40 pixels in, both inside it.
struct Windows {
  void Place(int trackWidth, int thumbWidth) const {
    KelPlaceWindow(track, {5, 10, 5 + trackWidth, 30});
    KelPlaceWindow(thumb, {40, 12, 40 + thumbWidth, 28});
  }

  const HWND dialog = KelMakeWindow(nullptr, {300, 200, 900, 600});
  const HWND track = KelMakeWindow(dialog, {});
  const HWND thumb = KelMakeWindow(dialog, {});
};

TEST(Slider, Revise) {
  const Windows windows;
  const int rows[][4] = {
      // widths of the track and the thumb, margin, usable width
      {200, 20, 16, 150}, {200, 20, 100, 1}, {200, 20, 91, 1},        {200, 20, 90, 2},
      {0, 0, 0, 2},       {0, 0, 1, 1},      {200, 20, INT_MIN, 182}, {-200, 20, 16, 150},
  };
  for (const auto& [track, thumb, margin, usable] : rows) {
    windows.Place(track, thumb);
    RECT trackRect = {-1, -1, -1, -1};
    RECT thumbRect = trackRect;
    EXPECT_EQ(ReviseKelProcess(windows.track, windows.thumb, &trackRect, &thumbRect, margin),
              usable)
        << margin;
    // The track's place is its own, the thumb's is in the parent.
    const std::array sides = {trackRect.left, trackRect.right, thumbRect.left, thumbRect.right};
    EXPECT_EQ(sides, (std::array<LONG, 4>{0, track, 40, 40 + thumb}));
    EXPECT_EQ(thumbRect.bottom, 28);
  }
}

// The columns: widths of the track and the thumb, bounds, mode, pixels, step; the position.
TEST(Slider, Adjust) {
  const Windows windows;
  const int rows[][8] = {
      {200, 20, 0, 100, 0, 75, 10, 50},
      {200, 20, 0, 100, 0, 68, 10, 50},  // half a step is 7 pixels: the nearest multiple
      {200, 20, 0, 100, 1, 67, 10, 40},
      {200, 20, -50, 50, 2, 70, 1, -3},  // -3.33 toward zero
      {200, 20, 0, 100, 2, -1000, 1, 0},
      {200, 20, INT_MIN, 0, 0, -75, 1, -1073741824},  // twice the range wraps to 0
      {200, 20, 0, INT_MAX, 2, INT_MAX, 1, 0},        // beyond 32 bits
      {20, 400, 10, 100, 2, 50, 1, 10},               // NegativeWidth: 0, raised to the range
      {50, 20, 3, 100, 2, 50, 1, 3},                  // ZeroWidth: infinite
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    const auto& [track, thumb, lower, upper, mode, pixels, step, position] = row;
    windows.Place(track, thumb);
    SliderRecord slider = {{}, 99, lower, upper, windows.track, windows.thumb};
    RECT trackRect = {};
    RECT thumbRect = {};
    EXPECT_EQ(AdjustKelProcess(&slider, mode, pixels, step, &trackRect, &thumbRect), position);
    EXPECT_EQ(slider.position, 99);
    EXPECT_EQ(thumbRect.left, 40);
  }
}

#endif

}  // namespace
