// Copying and moving between storages, also to storages that are not ours.
#include <algorithm>

#include "platform/compound_tree.h"
#include "platform/storage_enumerator.h"
#include "platform/storage_storage.h"
#include "platform/storage_stream.h"

namespace {

constexpr DWORD MakeMode = STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr DWORD OpenMode = STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr ULARGE_INTEGER Everything = {{0xFFFFFFFF, 0xFFFFFFFF}};

/// Ends an object's reference with its scope.
template <class Interface>
class Reference {
 public:
  Reference() = default;
  explicit Reference(Interface* object) : held(object) {}
  ~Reference() {
    if (held != nullptr) held->Release();
  }
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;
  Interface* operator->() const { return held; }
  Interface* Get() const { return held; }
  Interface** Place() { return &held; }

 private:
  Interface* held = nullptr;
};

bool Contains(const IID* ids, DWORD count, REFIID id) {
  return std::any_of(ids, ids + count, [&](REFIID each) { return each == id; });
}

bool Contains(SNB names, const CompoundName& name) {
  for (; names != nullptr && *names != nullptr; ++names) {
    CompoundName excluded;
    if (FAILED(MakeName(*names, &excluded))) continue;
    if (CompareNames(excluded.units, excluded.length, name.units, name.length) == 0) return true;
  }
  return false;
}

/// The storage as ours, or null when somebody else made it. Good while `storage` is held.
CompoundStorage* Ours(IStorage* storage) {
  void* object = nullptr;
  if (FAILED(storage->QueryInterface(IID_CompoundStorage, &object))) return nullptr;
  storage->Release();
  return static_cast<CompoundStorage*>(static_cast<IStorage*>(object));
}

struct TaskName {
  explicit TaskName(const CompoundName& name) : text(NewWideName(name.units, name.length)) {
    if (text == nullptr) throw std::bad_alloc();
  }
  ~TaskName() { CoTaskMemFree(text); }
  TaskName(const TaskName&) = delete;
  TaskName& operator=(const TaskName&) = delete;
  OLECHAR* text;
};

}  // namespace

bool CompoundStorage::IsWithin(const CompoundEntry* ancestor) const {
  const CompoundEntry* at = entry;
  while (at != nullptr && at != ancestor) at = at->parent;
  return at != nullptr;
}

/// Whether a stream of this name in `to` would take the place of this storage or of one that
/// holds it, and destroy what is being copied.
bool CompoundStorage::WouldReplaceThis(IStorage* to, const OLECHAR* newName) const {
  const auto* ours = Ours(to);
  CompoundName name;
  if (ours == nullptr || ours->document != document || FAILED(MakeName(newName, &name))) {
    return false;
  }
  const CompoundEntry* there = document->Directory().Find(ours->entry, name);
  return there != nullptr && IsWithin(there);
}

/// Copies one element with everything beneath it but the kinds that are excluded. Storages of the
/// same name are merged.
HRESULT CompoundStorage::CopyElement(const CompoundEntry& element, IStorage* to,
                                     const OLECHAR* newName, DWORD ciidExclude,
                                     const IID* rgiidExclude) {
  auto* source = const_cast<CompoundEntry*>(&element);
  if (element.IsStream()) {
    if (WouldReplaceThis(to, newName)) return STG_E_ACCESSDENIED;
    Reference<IStream> from(new CompoundStream(document, source, OpenMode));
    Reference<IStream> made;
    const HRESULT result = to->CreateStream(newName, MakeMode, 0, 0, made.Place());
    if (FAILED(result)) return result;
    return from->CopyTo(made.Get(), Everything, nullptr, nullptr);
  }
  Reference<IStorage> from(new CompoundStorage(document, source, OpenMode));
  Reference<IStorage> made;
  HRESULT result = to->OpenStorage(newName, nullptr, OpenMode, nullptr, 0, made.Place());
  if (result == STG_E_FILENOTFOUND) {
    result = to->CreateStorage(newName, MakeMode, 0, 0, made.Place());
  }
  if (FAILED(result)) return result;
  return from->CopyTo(ciidExclude, rgiidExclude, nullptr, made.Get());
}

HRESULT CompoundStorage::CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB snbExclude,
                                IStorage* pstgDest) {
  if (IsReverted()) return STG_E_REVERTED;
  if (pstgDest == nullptr) return STG_E_INVALIDPOINTER;
  if (rgiidExclude == nullptr) ciidExclude = 0;
  const auto* ours = Ours(pstgDest);
  if (ours != nullptr && !ours->IsReverted() && ours->IsWithin(entry)) return STG_E_ACCESSDENIED;
  return Guarded([&] {
    const bool streams = !Contains(rgiidExclude, ciidExclude, IID_IStream);
    const bool storages = !Contains(rgiidExclude, ciidExclude, IID_IStorage);
    HRESULT result = pstgDest->SetClass(entry->storage->clsid);
    if (SUCCEEDED(result)) {
      result = pstgDest->SetStateBits(entry->storage->stateBits, 0xFFFFFFFF);
    }
    for (const CompoundEntry* child : SortedChildren(*entry)) {
      if (FAILED(result)) return result;
      if (!(child->IsStream() ? streams : storages) || Contains(snbExclude, child->name)) continue;
      result = CopyElement(*child, pstgDest, TaskName(child->name).text, ciidExclude, rgiidExclude);
    }
    return result;
  });
}

HRESULT CompoundStorage::MoveElementTo(const OLECHAR* pwcsName, IStorage* pstgDest,
                                       const OLECHAR* pwcsNewName, DWORD grfFlags) {
  CompoundName name;
  CompoundName newName;
  CompoundEntry* found = nullptr;
  HRESULT result = Find(pwcsName, &name, &found);
  if (FAILED(result)) return result;
  if (pstgDest == nullptr) return STG_E_INVALIDPOINTER;
  if (grfFlags > STGMOVE_COPY) return STG_E_INVALIDFLAG;
  result = MakeName(pwcsNewName, &newName);
  if (FAILED(result)) return result;
  const bool move = grfFlags == STGMOVE_MOVE;
  if (found->opened != nullptr || (move && !IsWritable())) return STG_E_ACCESSDENIED;
  auto* ours = Ours(pstgDest);
  if (ours != nullptr && ours->IsReverted()) return STG_E_REVERTED;
  if (ours != nullptr && ours->document == document) {
    const CompoundEntry* there = document->Directory().Find(ours->entry, newName);
    if (there == found || ours->IsWithin(found)) return STG_E_ACCESSDENIED;
    if (move && there == nullptr && ours->IsWritable()) {
      document->Directory().Move(found, ours->entry, newName);
      Touch(entry);
      Touch(ours->entry);
      return S_OK;
    }
  }
  result = Guarded([&] { return CopyElement(*found, pstgDest, pwcsNewName, 0, nullptr); });
  return FAILED(result) || !move ? result : DestroyElement(pwcsName);
}
