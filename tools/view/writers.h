#pragma once

#include <string>

#include "tools/view/picture.h"

namespace kelview {

/// A drawing for print and documents, seen from the front right, without perspective (SVG 1.1).
std::string WriteDrawing(const Picture& picture);

/// A page that needs nothing else: it turns, pans and zooms, and lists all values (HTML).
std::string WritePage(const Picture& picture);

/// A model with a named node for each thing that is drawn (binary glTF 2.0). Y is up there; the
/// sizes are those of the world unless its numbers are too small or too large for such files.
std::string WriteModel(const Picture& picture);

}  // namespace kelview
