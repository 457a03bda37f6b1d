#pragma once

#ifndef _WIN32

#include <string>

/// Moves the file `from` to the new name `to` on another file system: copies it with its
/// permissions and times, has the copy written to the disk, gives it its name without replacing
/// anything, has that written as well, and then deletes `from`. 0 when done, else an errno; then
/// `from` is untouched, and nothing new is left behind that could be taken away again. Throws only
/// before anything is made. Paths are the system's own.
///
/// Where the file system can, the copy has no name until it is complete: a process that is killed
/// leaves nothing of it. Elsewhere it is called ".kelsave-" and six letters meanwhile.
int MoveByCopying(const std::string& from, const std::string& to);

#endif
