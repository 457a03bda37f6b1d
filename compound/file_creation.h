#pragma once

#include <cstdint>
#include <string>

#include "compound/disk.h"
#include "compound/outcome.h"

/// Opens the file for writing, `space` bytes long, with the space for them; makes it when it is not
/// there. Its bytes count as zeros that have yet to be written: those of an old file are still in
/// it. A symbolic link is followed, so `*folder` tells where the file itself lies. Refuses what is
/// not a plain file, what its owner may not write and what is open here already. On failure,
/// whichever call or allocation it was that failed, an old file has its bytes and its length and no
/// new one is left behind.
Outcome OpenEmpty(const char* path, std::uint64_t space, OpenFile* file, std::string* folder);
