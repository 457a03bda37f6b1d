#include "tools/view/grid.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tools/view/text.h"

namespace kelview {
namespace {

/// One axis of the grid, counted in whole steps.
struct Range {
  int low = 0;
  int high = 0;
};

class Grid {
 public:
  Grid(const Fit& fit, Picture& picture) : fit_(fit), picture_(picture) {
    TakeAll();
    step_ = GridStep(std::max({high_.x - low_.x, high_.y - low_.y, high_.z - low_.z}));
    x_ = Around(low_.x, high_.x, 2);
    y_ = Around(low_.y, high_.y, 2);
    z_ = Around(low_.z, high_.z, 0);
    floor_ = fit.originShown ? 0 : z_.low;
  }

  void Draw() {
    for (int i = x_.low; i <= x_.high; ++i)
      Line(Ink::Grid, {i, y_.low, floor_}, {i, y_.high, floor_});
    for (int i = y_.low; i <= y_.high; ++i)
      Line(Ink::Grid, {x_.low, i, floor_}, {x_.high, i, floor_});
    if (z_.low < z_.high) Line(Ink::Grid, {x_.low, y_.low, z_.low}, {x_.low, y_.low, z_.high});
    if (fit_.originShown) Axes();
    Numbers();
    picture_.middle = (At({x_.low, y_.low, std::min(z_.low, floor_)}) +
                       At({x_.high, y_.high, std::max(z_.high, floor_)})) /
                      2;
    picture_.radius =
        (At({x_.high, y_.high, std::max(z_.high, floor_)}) - picture_.middle).Mag() + step_;
  }

 private:
  struct Node {
    int x, y, z;
  };

  void TakeAll() {
    if (fit_.originShown) Take({});
    for (const Mark& dot : picture_.dots) Take(dot.at);
    for (const Stroke& stroke : picture_.strokes) {
      for (const CyVector& place : stroke.line) Take(place);
    }
    if (first_ || (high_ - low_).Mag() == 0.0) Take(low_ + CyVector(1, 1, 0));
  }

  void Take(const CyVector& place) {
    if (first_) low_ = high_ = place;
    first_ = false;
    low_.Set(std::min(low_.x, place.x), std::min(low_.y, place.y), std::min(low_.z, place.z));
    high_.Set(std::max(high_.x, place.x), std::max(high_.y, place.y), std::max(high_.z, place.z));
  }

  /// The steps from at or below `low` to at or above `high`, with `margin` steps at least on
  /// both sides of the middle.
  Range Around(double low, double high, int margin) const {
    const int first = static_cast<int>(std::floor(low / step_ + 1e-6));
    const int last = static_cast<int>(std::ceil(high / step_ - 1e-6));
    const int middle = first + (last - first) / 2;
    return {std::min(first, middle - margin), std::max(last, middle + margin)};
  }

  CyVector At(const Node& node) const { return CyVector(node.x, node.y, node.z) * step_; }

  void Line(Ink ink, const Node& from, const Node& to) {
    picture_.strokes.push_back({NoThing, ink, Pen::Thin, false, {At(from), At(to)}});
  }

  /// Through the origin, a little longer than the grid.
  void Axes() {
    const int top = std::max(z_.high, 1);
    Axis(Ink::AxisX, "x", {x_.low, 0, 0}, {x_.high, 0, 0});
    Axis(Ink::AxisY, "y", {0, y_.low, 0}, {0, y_.high, 0});
    Axis(Ink::AxisZ, "z", {0, 0, z_.low}, {0, 0, top});
  }

  void Axis(Ink ink, const char* name, const Node& from, const Node& to) {
    CyVector more = At(to) - At(from);
    const CyVector end = At(to) + more.Normalize() * (0.7 * step_);
    picture_.strokes.push_back({NoThing, ink, Pen::Thin, true, {At(from), end}});
    picture_.labels.push_back({NoThing, ink, name, end});
  }

  void Numbers() {
    for (int i = x_.low; i <= x_.high; ++i) Number(i, fit_.centre.x, {i, y_.low, floor_});
    for (int i = y_.low; i <= y_.high; ++i) Number(i, fit_.centre.y, {x_.high, i, floor_});
    if (z_.low == z_.high) return;
    for (int i = z_.low; i <= z_.high; ++i) {
      if (i != floor_) Number(i, fit_.centre.z, {x_.low, y_.low, i});
    }
  }

  /// The number of a step in the world: the centre is a whole number of steps itself.
  void Number(int steps, double centre, const Node& at) {
    const double step = step_ * fit_.unit;
    const double number = (std::nearbyint(centre / step) + steps) * step;
    picture_.labels.push_back({NoThing, Ink::Text, NumberText(number, 14), At(at), SmallLabel});
  }

  const Fit& fit_;
  Picture& picture_;
  CyVector low_;
  CyVector high_;
  bool first_ = true;
  double step_ = 1.0;
  Range x_;
  Range y_;
  Range z_;
  int floor_ = 0;
};

}  // namespace

void DrawGrid(const Fit& fit, Picture& picture) { Grid(fit, picture).Draw(); }

}  // namespace kelview
