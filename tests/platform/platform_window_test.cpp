#include <gtest/gtest.h>

#include <vector>

#include "platform/window.h"

namespace {

TEST(Cursor, HistoryOfWhatWasShown) {
  SetCursor(nullptr);
  KelForgetCursorHistory();
  const HCURSOR wait = LoadCursorA(nullptr, IDC_WAIT);
  EXPECT_EQ(SetCursor(wait), nullptr);
  EXPECT_EQ(SetCursor(LoadCursorA(nullptr, IDC_ARROW)), wait);
  EXPECT_EQ(KelCurrentCursor(), 32512);
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
  struct {
    HWND from, to;
    LONG x, y;
    int moved;
  } const rows[] = {
      {thumb, panel, -5, 3, static_cast<int>(0x0003FFFBU)},
      {thumb, nullptr, 105, 73, 0x00490069},
      {nullptr, panel, -110, -70, static_cast<int>(0xFFBAFF92U)},
  };
  for (const auto& row : rows) {
    POINT points[2] = {{0, 0}, {1, 1}};
    EXPECT_EQ(MapWindowPoints(row.from, row.to, points, 2), row.moved);
    EXPECT_TRUE(points[0].x == row.x && points[0].y == row.y);
    EXPECT_TRUE(points[1].x == row.x + 1 && points[1].y == row.y + 1);
  }

  RECT rect = {9, 9, 9, 9};
  EXPECT_NE(GetClientRect(thumb, &rect), 0);
  EXPECT_TRUE(rect.left == 0 && rect.top == 0 && rect.right == 20 && rect.bottom == 5);
  KelDestroyWindow(frame);
  POINT point = {7, 7};
  EXPECT_EQ(MapWindowPoints(thumb, nullptr, &point, 1), 0);
  EXPECT_EQ(GetClientRect(panel, &rect), 0);
}

}  // namespace
