#pragma once

#include <string>
#include <string_view>

#include "tools/view/picture.h"

namespace kelview {

/// The endings that WritePicture knows, for messages.
inline constexpr const char* KnownEndings = ".svg, .html or .glb";

/// True when the ending of `path` says which form a picture takes there.
bool KnowsForm(std::string_view path);

/// Writes `picture` to the file at `path`, in the form that its ending says, in place of what was
/// there. Returns an empty text, or the reason why that failed; the file is then as it was.
std::string WritePicture(const Picture& picture, const std::string& path);

}  // namespace kelview
