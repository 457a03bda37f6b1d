#include "tools/view/labels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kelview {
namespace {

constexpr double CellSize = 3.0;

/// Where a label may stand, as parts of half its size and of the gap beyond it.
constexpr Spot Sides[] = {{1, -1}, {1, 0}, {-1, -1}, {1, 1}, {-1, 1}, {-1, 0}, {0, -1}, {0, 1}};
constexpr double Gaps[] = {5.0, 14.0, 26.0, 40.0};

}  // namespace

LabelRoom::LabelRoom(double width, double height)
    : columns_(static_cast<int>(width / CellSize)),
      rows_(static_cast<int>(height / CellSize)),
      taken_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_), false) {}

LabelRoom::Cells LabelRoom::CellsOf(const Spot& centre, double width, double height) const {
  const auto cell = [](double at) { return static_cast<int>(std::floor(at / CellSize)); };
  return {cell(centre.x - width / 2), cell(centre.x + width / 2) + 1, cell(centre.y - height / 2),
          cell(centre.y + height / 2) + 1};
}

void LabelRoom::Take(const Spot& centre, double width, double height) {
  const Cells cells = CellsOf(centre, width, height);
  for (int row = std::max(cells.top, 0); row < std::min(cells.bottom, rows_); ++row) {
    for (int column = std::max(cells.left, 0); column < std::min(cells.right, columns_); ++column) {
      taken_[At(row, column)] = true;
    }
  }
}

void LabelRoom::TakeLine(const std::vector<Spot>& spots) {
  for (std::size_t i = 1; i < spots.size(); ++i) {
    const Spot way{spots[i].x - spots[i - 1].x, spots[i].y - spots[i - 1].y};
    const int steps = 1 + static_cast<int>(std::hypot(way.x, way.y) / CellSize);
    for (int step = 0; step <= steps; ++step) {
      Take({spots[i - 1].x + way.x * step / steps, spots[i - 1].y + way.y * step / steps}, 1, 1);
    }
  }
}

bool LabelRoom::Free(const Cells& cells) const {
  if (cells.left < 0 || cells.top < 0 || cells.right > columns_ || cells.bottom > rows_) {
    return false;
  }
  for (int row = cells.top; row < cells.bottom; ++row) {
    for (int column = cells.left; column < cells.right; ++column) {
      if (taken_[At(row, column)]) return false;
    }
  }
  return true;
}

std::optional<Spot> LabelRoom::Place(const Spot& anchor, double width, double height, bool beside) {
  for (const double gap : Gaps) {
    for (const Spot& side : Sides) {
      const Spot centre{anchor.x + side.x * (width / 2 + gap),
                        anchor.y + side.y * (height / 2 + gap * 0.6)};
      if (!Free(CellsOf(centre, width, height))) continue;
      Take(centre, width, height);
      return centre;
    }
    if (beside) break;
  }
  return std::nullopt;
}

}  // namespace kelview
