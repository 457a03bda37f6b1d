#include "platform/element.h"

#include <cstring>
#include <ctime>
#include <utility>

OLECHAR* NewWideName(const CompoundName& name) {
  wchar_t text[MaxNameUnits + 1];
  const std::size_t bytes = (Widen(name, text) + 1) * sizeof *text;
  void* copy = CoTaskMemAlloc(bytes);
  if (copy != nullptr) std::memcpy(copy, text, bytes);
  return static_cast<OLECHAR*>(copy);
}

std::uint64_t TimeNow() {
  constexpr std::uint64_t From1601To1970 = 116444736000000000;
  timespec now = {};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return From1601To1970 + static_cast<std::uint64_t>(now.tv_sec) * 10000000 +
         static_cast<std::uint64_t>(now.tv_nsec) / 100;
}

StorageInfo& Touch(CompoundContents& contents, CompoundEntry& storage) {
  StorageInfo& info = contents.Written()->Change(storage);
  info.modified = TimeNow();
  return info;
}

CLSID ClassOf(const StorageInfo& storage) {
  CLSID clsid;
  static_assert(sizeof clsid == sizeof storage.classId);
  std::memcpy(&clsid, storage.classId.data(), sizeof clsid);
  return clsid;
}

HRESULT StatEntry(const CompoundEntry& entry, DWORD flags, DWORD mode, STATSTG* stat) {
  *stat = {};
  stat->type = entry.IsStream() ? STGTY_STREAM : STGTY_STORAGE;
  stat->grfMode = mode;
  if (entry.IsStream()) {
    stat->cbSize.QuadPart = entry.size;
  } else {
    const StorageInfo& info = *entry.storage;
    const auto times = {std::pair{&stat->mtime, info.modified}, {&stat->ctime, info.created}};
    for (const auto& [to, time] : times) {
      to->dwLowDateTime = static_cast<DWORD>(time);
      to->dwHighDateTime = static_cast<DWORD>(time >> 32);
    }
    stat->clsid = ClassOf(info);
    stat->grfStateBits = info.stateBits;
  }
  if ((flags & STATFLAG_NONAME) != 0) return S_OK;
  stat->pwcsName = NewWideName(entry.name);
  return stat->pwcsName != nullptr ? S_OK : E_OUTOFMEMORY;
}
