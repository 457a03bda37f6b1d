#pragma once

#include <string>

#include "geometry/vector.h"
#include "tools/view/fit.h"
#include "tools/view/picture.h"

namespace kelview {

class Drawing;

/// What a type of value looks like.
struct Shape {
  Ink ink;

  /// The places that it takes in the world, the one that matters most last; `from` is where
  /// vectors start.
  Reach (*reach)(const CaValue& value, const CyVector& from);

  /// What the picture cannot show; may be empty.
  std::string (*note)(const CaValue& value);

  /// Why there is nothing to draw, or null when there is something. Of finite values only.
  const char* (*refusal)(const CaValue& value);

  void (*draw)(Drawing& drawing, const CaValue& value);
};

/// The look of `type`, one of CaType; null for what is only told: numbers, texts and nothing.
const Shape* ShapeOf(int type);

/// Whether each number of `value` is finite.
bool IsFinite(const CaValue& value);

/// What drawing needs to know besides the value.
struct Pose {
  const Fit* fit;
  CyVector from;   // in the world
  CyVector pivot;  // in the picture, of what turns: rotations have no place of their own
  int turns = 0;   // rotations drawn before, so that their arcs do not hide one another
};

/// Adds the strokes, dots and labels of thing number `index` to `picture` and sets where its name
/// belongs.
void DrawShape(const CaValue& value, int index, Pose& pose, Picture& picture);

}  // namespace kelview
