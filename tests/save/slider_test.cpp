#include <gtest/gtest.h>

#include <climits>

#include "platform/window.h"
#include "save/kelsave.h"
#include "save/wrapping.h"

namespace {

SliderRecord MakeSlider(int lower, int upper, int position = 0) {
  SliderRecord slider = {};
  slider.lower = lower;
  slider.upper = upper;
  slider.position = position;
  return slider;
}

TEST(Slider, Set) {
  struct {
    int lower, upper, old, mode, position, step, snap;
    int stored, changed;
  } const rows[] = {
      {0, 100, 0, 0, 47, 10, 1, 40, 1},
      {0, 100, 40, 1, 47, 10, 1, 40, 0},
      {0, 100, 0, 2, 47, 10, 1, 47, 1},
      {0, 100, 0, -1, 47, 10, 1, 47, 1},
      {0, 100, 0, 0, 47, 10, 0, 47, 1},
      {-100, 100, 0, 0, -7, 5, 1, -5, 1},
      {-3, 100, 0, 0, -7, 5, 1, -3, 1},
      {0, 100, 0, 0, 150, 10, 1, 100, 1},
      {0, 100, 100, 0, 150, 10, 1, 100, 0},
      {0, 95, 0, 0, 99, 10, 1, 90, 1},
      {10, 5, 0, 2, 7, 1, 0, 5, 1},  // crossed bounds
      {0, 100, 0, 0, 47, 0, 1, 47, 1},
      {0, 100, 0, 0, 47, -10, 1, 40, 1},
      {INT_MIN, INT_MAX, 0, 0, INT_MIN, -1, 1, INT_MIN, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << row.position << " step " << row.step << " mode " << row.mode);
    SliderRecord slider = MakeSlider(row.lower, row.upper, row.old);
    EXPECT_EQ(SetKelProcess(&slider, row.mode, row.position, row.step, row.snap), row.changed);
    EXPECT_EQ(slider.position, row.stored);
  }
}

#ifndef _WIN32

/// A dialog with a track 5 pixels in and a thumb 40 pixels in, both inside it.
struct Windows {
  HWND dialog = KelMakeWindow(nullptr, {300, 200, 900, 600});
  HWND track;
  HWND thumb;
  RECT trackRect = {-1, -1, -1, -1};
  RECT thumbRect = {-1, -1, -1, -1};

  Windows(int trackWidth, int thumbWidth)
      : track(KelMakeWindow(dialog, {5, 10, 5 + trackWidth, 30})),
        thumb(KelMakeWindow(dialog, {40, 12, 40 + thumbWidth, 28})) {}
  Windows(const Windows&) = delete;
  Windows& operator=(const Windows&) = delete;
  ~Windows() { KelDestroyWindow(dialog); }
};

TEST(Slider, Revise) {
  struct {
    int track, thumb, margin, usable;
  } const rows[] = {
      {200, 20, 16, 150}, {200, 20, 100, 1}, {200, 20, 91, 1},        {200, 20, 90, 2},
      {0, 0, 0, 2},       {0, 0, 1, 1},      {200, 20, INT_MIN, 182}, {-200, 20, 16, 150},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.track << " " << row.thumb << " " << row.margin);
    Windows w(row.track, row.thumb);
    EXPECT_EQ(ReviseKelProcess(w.track, w.thumb, &w.trackRect, &w.thumbRect, row.margin),
              row.usable);
    EXPECT_EQ(w.trackRect.left, 0);  // in its own coordinates
    EXPECT_EQ(w.trackRect.right, row.track);
    EXPECT_EQ(w.thumbRect.left, 40);  // in the parent's
    EXPECT_EQ(w.thumbRect.right, 40 + row.thumb);
    EXPECT_EQ(w.thumbRect.bottom, 28);
  }
}

TEST(Slider, Adjust) {
  struct {
    int track, thumb, lower, upper, mode, pixels, step, position;
  } const rows[] = {
      {200, 20, 0, 100, 0, 75, 1, 50},
      {200, 20, 0, 100, 0, 75, 10, 50},
      {200, 20, 0, 100, 0, 68, 10, 50},  // half a step is 7 pixels: the nearest multiple
      {200, 20, 0, 100, 1, 67, 10, 40},
      {200, 20, 0, 100, 2, 68, 10, 45},
      {200, 20, -50, 50, 2, 75, 1, 0},
      {200, 20, -50, 50, 2, 70, 1, -3},  // -3.33 toward zero
      {200, 20, 0, 100, 2, 1000, 1, 100},
      {200, 20, 0, 100, 2, -1000, 1, 0},
      {200, 20, 7, 7, 0, 75, 5, 7},  // no range: no correction
      {200, 20, 0, 100, 0, 75, 0, 50},
      {200, 20, INT_MIN, 0, 0, 75, 1, INT_MIN},  // twice the range wraps to 0
      {200, 20, 0, INT_MAX, 2, INT_MAX, 1, 0},   // beyond 32 bits
      {20, 400, 10, 100, 2, 50, 1, 10},          // NegativeWidth: 0, raised to the range
      {20, 400, -10, 100, 2, 50, 1, 0},
      {50, 20, 3, 100, 2, 50, 1, 3},  // ZeroWidth: infinite
      {50, 20, 3, 100, 0, 0, 5, 3},   // ZeroWidth: not a number
      {50, 20, 3, 100, 2, -50, 1, 3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.pixels << " pixels of " << row.track << ", mode "
                                    << row.mode << " step " << row.step);
    Windows w(row.track, row.thumb);
    SliderRecord slider = MakeSlider(row.lower, row.upper, 99);
    slider.trackWindow = w.track;
    slider.thumbWindow = w.thumb;
    EXPECT_EQ(AdjustKelProcess(&slider, row.mode, row.pixels, row.step, &w.trackRect, &w.thumbRect),
              row.position);
    EXPECT_EQ(slider.position, 99);
    EXPECT_EQ(w.thumbRect.left, 40);
  }
}

#endif

TEST(Wrapping, EveryOperandIsGood) {
  EXPECT_EQ(Sum(INT_MAX, 1), INT_MIN);
  EXPECT_EQ(Difference(INT_MIN, 1), INT_MAX);
  EXPECT_EQ(Product(65536, 65536), 0);
  EXPECT_EQ(Quotient(INT_MIN, -1), INT_MIN);
  EXPECT_EQ(Remainder(-7, 5), -2);
  EXPECT_EQ(Remainder(INT_MIN, -1), 0);
  EXPECT_EQ(Magnitude(INT_MIN), INT_MIN);
  EXPECT_EQ(Truncated(-2.9), -2);
  EXPECT_EQ(Truncated(2147483647.9), INT_MAX);
  EXPECT_EQ(Truncated(2147483648.0), INT_MIN);
}

}  // namespace
