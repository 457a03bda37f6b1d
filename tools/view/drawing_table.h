#pragma once

#include <string>

#include "tools/view/picture.h"

namespace kelview::svg {

inline constexpr double TableWidth = 360.0;  // pixels

/// The things of `picture` as rows of text between `left` and `left` + TableWidth, down to
/// `height`; the last row says how many found no room.
std::string Table(const Picture& picture, double left, double height);

}  // namespace kelview::svg
