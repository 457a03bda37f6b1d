#pragma once

namespace kelcalc {

/// The version of the project and, where the sources were under version control when it was
/// built, the commit: "0.1.0 (0123abc)". A "+" behind the commit tells of changes on top of it.
extern const char* const VersionText;

}  // namespace kelcalc
