#pragma once

#include <string>
#include <vector>

struct CaInterpreter;

namespace kelcalc {

/// Writes the picture of the variables, oldest first, and of the stack, from the bottom to the
/// top, to each of `files`, in the form that its ending says. Vectors start at the point that the
/// variable `from` holds; at the origin when that is empty. Returns an empty text, or what went
/// wrong first; every other file is written nevertheless.
std::string WritePictures(const CaInterpreter& interpreter, const std::vector<std::string>& files,
                          const std::string& from);

/// Writes the picture as a page that this user alone can read, and opens the system's viewer for
/// it where there is one. Returns what is to be said of that.
std::string ShowPicture(const CaInterpreter& interpreter, const std::string& from);

}  // namespace kelcalc
