#include "platform/open_object.h"

#include <ctime>
#include <utility>

OpenObject::OpenObject(CompoundContents* openedDocument, CompoundEntry* openedEntry)
    : document_(openedDocument), entry_(openedEntry), next_(openedEntry->opened) {
  if (next_ != nullptr) next_->previous_ = this;
  entry_->opened = this;
}

void OpenObject::CutOff() {
  if (entry_ == nullptr) return;
  (previous_ != nullptr ? previous_->next_ : entry_->opened) = next_;
  if (next_ != nullptr) next_->previous_ = previous_;
  if (entry_->opened == nullptr) document_->Closed(*entry_);
  document_ = nullptr;
  entry_ = nullptr;
}

void RevertTree(CompoundEntry* entry) {
  for (CompoundEntry* at = entry;;) {
    while (at->opened != nullptr) at->opened->CutOff();
    if (!at->IsStream() && at->storage->firstChild != nullptr) {
      at = at->storage->firstChild;
      continue;
    }
    while (at != entry && at->next == nullptr) at = at->parent;
    if (at == entry) return;
    at = at->next;
  }
}

std::uint64_t TimeNow() {
  constexpr std::uint64_t From1601To1970 = 116444736000000000;
  timespec now = {};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return From1601To1970 + static_cast<std::uint64_t>(now.tv_sec) * 10000000 +
         static_cast<std::uint64_t>(now.tv_nsec) / 100;
}

void Touch(CompoundEntry* storage) { storage->storage->modified = TimeNow(); }

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
    stat->clsid = info.clsid;
    stat->grfStateBits = info.stateBits;
  }
  if ((flags & STATFLAG_NONAME) != 0) return S_OK;
  stat->pwcsName = NewWideName(entry.name.units, entry.name.length);
  return stat->pwcsName != nullptr ? S_OK : E_OUTOFMEMORY;
}
