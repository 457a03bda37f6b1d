#pragma once

namespace kelview {

/// The files in page/, made part of the program by the build; the scripts in the order in which
/// they build upon one another.
extern const char* const PageMarkup;
extern const char* const PageStyle;
extern const char* const PageScript;

}  // namespace kelview
