// Copying and moving between storages, also to storages that are not ours.
#include <algorithm>
#include <utility>
#include <vector>

#include "compound/document.h"
#include "platform/compound_enumerator.h"
#include "platform/compound_storage.h"
#include "platform/compound_stream.h"
#include "platform/element.h"
#include "platform/results.h"

namespace {

constexpr DWORD MakeMode = STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr DWORD OpenMode = STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr DWORD ReadMode = STGM_SHARE_EXCLUSIVE | STGM_READ;
constexpr ULARGE_INTEGER Everything = {{0xFFFFFFFF, 0xFFFFFFFF}};

/// Ends an object's reference with its scope.
template <class Interface>
class Reference {
 public:
  Reference() = default;
  explicit Reference(Interface* object) : held_(object) {}
  ~Reference() {
    if (held_ != nullptr) held_->Release();
  }
  Reference(Reference&& other) noexcept : held_(std::exchange(other.held_, nullptr)) {}
  Reference& operator=(Reference&& other) noexcept {
    std::swap(held_, other.held_);
    return *this;
  }
  Interface* operator->() const { return held_; }
  Interface* Get() const { return held_; }
  Interface** Place() { return &held_; }

 private:
  Interface* held_ = nullptr;
};

bool Contains(const IID* ids, DWORD count, REFIID id) {
  return std::any_of(ids, ids + count, [&](REFIID each) { return each == id; });
}

bool Contains(SNB names, const CompoundName& name) {
  for (; names != nullptr && *names != nullptr; ++names) {
    CompoundName excluded;
    if (!MakeName(*names, &excluded, NameRules::Existing)) continue;
    if (IsSameName(excluded, name)) return true;
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
  explicit TaskName(const CompoundName& name) : text(NewWideName(name)) {
    if (text == nullptr) throw std::bad_alloc();
  }
  ~TaskName() { CoTaskMemFree(text); }
  TaskName(const TaskName&) = delete;
  TaskName& operator=(const TaskName&) = delete;
  OLECHAR* text;
};

}  // namespace

bool CompoundStorage::IsWithin(const CompoundEntry* ancestor) const {
  const CompoundEntry* at = entry_;
  while (at != nullptr && at != ancestor) at = at->parent;
  return at != nullptr;
}

bool CompoundStorage::WouldReplaceThis(IStorage* to, const OLECHAR* newName) const {
  const auto* ours = Ours(to);
  CompoundName name;
  if (ours == nullptr || ours->document_ != document_ || !MakeName(newName, &name)) {
    return false;
  }
  const CompoundEntry* there = document_->Find(ours->entry_, name);
  return there != nullptr && IsWithin(there);
}

/// A copy of an element with everything beneath it but the kinds that are excluded. Storages of
/// the same name are merged. Storages wait in a list, so that their nesting costs no depth of
/// calls.
class StorageCopy {
 public:
  StorageCopy(DWORD ciidExclude, const IID* rgiidExclude)
      : streams_(!Contains(rgiidExclude, ciidExclude, IID_IStream)),
        storages_(!Contains(rgiidExclude, ciidExclude, IID_IStorage)) {}

  /// What `from` is, and its elements but those with these names.
  HRESULT Contents(CompoundStorage& from, SNB excluded, IStorage* to) {
    HRESULT result = Level(from, excluded, to);
    while (SUCCEEDED(result) && !pending_.empty()) {
      const Pending next = std::move(pending_.back());
      pending_.pop_back();
      result = Level(*next.from.Get(), nullptr, next.to.Get());
    }
    return result;
  }

  HRESULT Element(CompoundStorage& parent, CompoundEntry* element, IStorage* to,
                  const OLECHAR* newName) {
    if (element->IsStream()) return Stream(parent, element, to, newName);
    const Reference<CompoundStorage> from(
        new CompoundStorage(parent.Document(), element, ReadMode));
    Reference<IStorage> made;
    const HRESULT result = OpenOrCreate(to, newName, made.Place());
    return FAILED(result) ? result : Contents(*from.Get(), nullptr, made.Get());
  }

 private:
  struct Pending {
    Reference<CompoundStorage> from;
    Reference<IStorage> to;
  };

  HRESULT Level(CompoundStorage& from, SNB excluded, IStorage* to) {
    if (from.IsReverted()) return STG_E_REVERTED;
    HRESULT result = to->SetClass(ClassOf(*from.Entry()->storage));
    if (SUCCEEDED(result)) {
      result = to->SetStateBits(from.Entry()->storage->stateBits, 0xFFFFFFFF);
    }
    for (CompoundEntry* child : SortedChildren(*from.Entry())) {
      if (FAILED(result)) return result;
      if (!(child->IsStream() ? streams_ : storages_) || Contains(excluded, child->name)) continue;
      const TaskName name(child->name);
      result = child->IsStream() ? Stream(from, child, to, name.text)
                                 : Defer(from, child, to, name.text);
    }
    return result;
  }

  static HRESULT Stream(CompoundStorage& parent, CompoundEntry* element, IStorage* to,
                        const OLECHAR* newName) {
    if (parent.WouldReplaceThis(to, newName)) return STG_E_ACCESSDENIED;
    const Reference<IStream> from(new CompoundStream(parent.Document(), element, ReadMode));
    Reference<IStream> made;
    const HRESULT result = to->CreateStream(newName, MakeMode, 0, 0, made.Place());
    return FAILED(result) ? result : from->CopyTo(made.Get(), Everything, nullptr, nullptr);
  }

  HRESULT Defer(CompoundStorage& parent, CompoundEntry* element, IStorage* to,
                const OLECHAR* newName) {
    Pending& task = pending_.emplace_back();
    task.from = Reference(new CompoundStorage(parent.Document(), element, ReadMode));
    return OpenOrCreate(to, newName, task.to.Place());
  }

  static HRESULT OpenOrCreate(IStorage* parent, const OLECHAR* name, IStorage** opened) {
    const HRESULT result = parent->OpenStorage(name, nullptr, OpenMode, nullptr, 0, opened);
    if (result != STG_E_FILENOTFOUND) return result;
    return parent->CreateStorage(name, MakeMode, 0, 0, opened);
  }

  const bool streams_, storages_;  // which are copied
  std::vector<Pending> pending_;
};

HRESULT CompoundStorage::CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB snbExclude,
                                IStorage* pstgDest) {
  if (IsReverted()) return STG_E_REVERTED;
  if (pstgDest == nullptr) return STG_E_INVALIDPOINTER;
  if (rgiidExclude == nullptr) ciidExclude = 0;
  const auto* ours = Ours(pstgDest);
  if (ours != nullptr && !ours->IsReverted() && ours->IsWithin(entry_)) return STG_E_ACCESSDENIED;
  return Guarded(
      [&] { return StorageCopy(ciidExclude, rgiidExclude).Contents(*this, snbExclude, pstgDest); });
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
  if (!MakeName(pwcsNewName, &newName)) return STG_E_INVALIDNAME;
  const bool move = grfFlags == STGMOVE_MOVE;
  if (found->opened != nullptr || (move && !IsWritable())) return STG_E_ACCESSDENIED;
  auto* ours = Ours(pstgDest);
  if (ours != nullptr && ours->IsReverted()) return STG_E_REVERTED;
  if (ours != nullptr && ours->document_ == document_) {
    const CompoundEntry* there = document_->Find(ours->entry_, newName);
    if (there == found || ours->IsWithin(found)) return STG_E_ACCESSDENIED;
    if (move && there == nullptr && ours->IsWritable()) {
      document_->Written()->Move(found, ours->entry_, newName);
      Touch(*document_, *entry_);
      Touch(*document_, *ours->entry_);
      return S_OK;
    }
  }
  result =
      Guarded([&] { return StorageCopy(0, nullptr).Element(*this, found, pstgDest, pwcsNewName); });
  return FAILED(result) || !move ? result : DestroyElement(pwcsName);
}
