#include <gtest/gtest.h>

#include <vector>

#include "platform/window.h"

namespace {

TEST(Cursor, HistoryOfWhatWasShown) {
  KelForgetCursorHistory();
  const HCURSOR wait = LoadCursorA(nullptr, IDC_WAIT);
  SetCursor(wait);
  EXPECT_EQ(SetCursor(LoadCursorA(nullptr, IDC_ARROW)), wait);
  EXPECT_EQ(LoadCursorA(nullptr, "hand"), nullptr);
  EXPECT_EQ(KelCursorHistory(), (std::vector<int>{32514, 32512}));
  for (int i = 0; i < 300; ++i) SetCursor(i == 299 ? nullptr : wait);
  EXPECT_EQ(KelCursorHistory().size(), 256U);
  EXPECT_EQ(KelCursorHistory().back(), 0);
}

TEST(Windows, CoordinatesOfTheTree) {
  const HWND frame = KelMakeWindow(nullptr, {100, 50, 500, 400});
  const HWND panel = KelMakeWindow(frame, {10, 20, 210, 120});
  const HWND thumb = KelMakeWindow(panel, {-5, 3, 15, 8});
  POINT points[2] = {{0, 0}, {1, 1}};
  EXPECT_EQ(MapWindowPoints(thumb, nullptr, points, 2), 0x00490069);
  EXPECT_TRUE(points[0].x == 105 && points[0].y == 73 && points[1].x == 106 && points[1].y == 74);
  EXPECT_EQ(MapWindowPoints(nullptr, panel, points, 2), static_cast<int>(0xFFBAFF92U));
  EXPECT_TRUE(points[0].x == -5 && points[0].y == 3 && points[1].x == -4 && points[1].y == 4);

  RECT rect = {9, 9, 9, 9};
  EXPECT_NE(GetClientRect(thumb, &rect), 0);
  EXPECT_TRUE(rect.left == 0 && rect.top == 0 && rect.right == 20 && rect.bottom == 5);
  KelDestroyWindow(frame);
  EXPECT_EQ(MapWindowPoints(thumb, nullptr, points, 1), 0);
  EXPECT_EQ(GetClientRect(panel, &rect), 0);
}

}  // namespace
