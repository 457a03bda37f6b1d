#pragma once

#include "tools/view/fit.h"
#include "tools/view/picture.h"

namespace kelview {

/// Adds the grid of the floor, the axes and the numbers along them, around all that `picture`
/// holds already, and sets its middle and radius.
void DrawGrid(const Fit& fit, Picture& picture);

}  // namespace kelview
