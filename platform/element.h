#pragma once

#include "compound/document.h"
#include "platform/storage.h"

/// The name as wide text from the task allocator; null without memory.
OLECHAR* NewWideName(const CompoundName& name);

/// Fills `stat` from an entry. The name is left out with STATFLAG_NONAME.
HRESULT StatEntry(const CompoundEntry& entry, DWORD flags, DWORD mode, STATSTG* stat);

/// The present time in the units of FILETIME.
std::uint64_t TimeNow();

/// Marks a storage of a file that is being written as changed now, and gives what else is to be
/// changed in it.
StorageInfo& Touch(CompoundContents& contents, CompoundEntry& storage);

CLSID ClassOf(const StorageInfo& storage);
