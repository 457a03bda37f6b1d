#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/storage.h"

/// Calls on an open file that either do all they were asked for or fail, with the cause in errno.

/// Opens the file for writing, empty and with space for its first `space` bytes; makes it when it
/// is not there. Refuses what is not a plain file, what its owner may not write and what is open
/// here already. On failure an old file is as it was, and no new one is left behind.
HRESULT OpenEmpty(const char* path, std::uint64_t space, int* descriptor);

/// What storage says for an errno of the calls below.
HRESULT WriteResult(int error);

bool WriteAll(int descriptor, const std::byte* data, std::size_t size, std::uint64_t offset);

/// Takes the space [from, to). Where the file system cannot take space without writing, writes.
bool TakeSpace(int descriptor, std::uint64_t from, std::uint64_t to);

bool CutFile(int descriptor, std::uint64_t size);

/// Waits until the bytes are on the disk.
bool SyncFile(int descriptor);

/// Lets the file be opened again, also when a child process still holds the descriptor.
void UnlockFile(int descriptor);
