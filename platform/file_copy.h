#pragma once

#ifndef _WIN32

#include <string>

/// Moves the file `from` to the new name `to` on another file system: copies it beside its new
/// place with its permissions and times, has the copy written to the disk, gives it its name
/// without replacing anything and then deletes `from`. 0 when done; -1 with errno set, and then
/// `from` is untouched and nothing new is left behind. Paths are the system's own.
int MoveByCopying(const std::string& from, const std::string& to);

#endif
