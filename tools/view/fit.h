#pragma once

#include <vector>

#include "geometry/vector.h"

namespace kelview {

/// The places of the world that one thing reaches; none when it has no size of its own.
using Reach = std::vector<CyVector>;

/// Which part of the world a picture shows.
struct Fit {
  CyVector centre;
  double unit = 1.0;         // a power of ten
  double half = 1.0;         // of the longest side of what is shown, in units
  bool originShown = true;   // then `centre` is the origin
  CyVector pivot;            // in the picture: the origin, or the midst of what is shown
  std::vector<bool> tooFar;  // of each thing: it would squeeze all others

  CyVector ToPicture(const CyVector& place) const { return (place - centre) / unit; }
};

/// No coordinate beyond this one is drawn: sums and differences of two stay finite.
inline constexpr double FarthestDrawn = 1e301;

/// The longest step of the grid, in units, at which `length` units have no more than ten steps or
/// so: 1, 2 or 5 times a power of ten.
double GridStep(double length);

/// Chooses the part of the world that shows the things, which are finite and not beyond
/// `FarthestDrawn`. A quarter of them, at most, is left out as too far away: those behind a gap of
/// a hundred times the extent of the rest.
Fit FitView(const std::vector<Reach>& things);

}  // namespace kelview
