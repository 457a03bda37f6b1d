#pragma once

#include <string>
#include <string_view>

#include "tools/view/picture.h"

namespace kelview {

/// The endings that name a form, for messages.
inline constexpr const char* KnownEndings = ".svg, .html or .glb";

/// True when the ending of `path` says which form a picture takes there.
bool KnowsForm(std::string_view path);

/// The bytes of a file called `path` that shows `picture`. Its form must be known.
std::string PictureBytes(const Picture& picture, std::string_view path);

}  // namespace kelview
