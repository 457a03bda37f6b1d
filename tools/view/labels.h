#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace kelview {

/// A place or a size on paper, in pixels, y downwards.
struct Spot {
  double x = 0.0;
  double y = 0.0;
};

/// Where labels go so that they cover neither one another nor what is marked as taken.
class LabelRoom {
 public:
  LabelRoom(double width, double height);

  /// Marks the box around `centre`.
  void Take(const Spot& centre, double width, double height);

  /// Marks what a line through `spots` covers.
  void TakeLine(const std::vector<Spot>& spots);

  /// The middle of the first free box of that size around `anchor`, nearest places first, which is
  /// then taken; none when there is no room. `beside`: only right beside it.
  std::optional<Spot> Place(const Spot& anchor, double width, double height, bool beside = false);

 private:
  /// The cells that the box touches, as [low, high).
  struct Cells {
    int left, right, top, bottom;
  };
  Cells CellsOf(const Spot& centre, double width, double height) const;
  bool Free(const Cells& cells) const;
  std::size_t At(int row, int column) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(column);
  }

  int columns_;
  int rows_;
  std::vector<bool> taken_;
};

}  // namespace kelview
