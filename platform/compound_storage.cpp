#include "platform/compound_storage.h"

#include <cstring>
#include <cwchar>
#include <type_traits>

#include "compound/document.h"
#include "platform/compound_enumerator.h"
#include "platform/compound_stream.h"
#include "platform/element.h"
#include "platform/results.h"

namespace {

constexpr DWORD AccessMask = 3;
constexpr DWORD ShareMask = 0x70;
constexpr DWORD CommitFlags = STGC_OVERWRITE | STGC_ONLYIFCURRENT |
                              STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE | STGC_CONSOLIDATE;

/// Elements are opened directly and exclusively; creating may replace.
HRESULT CheckMode(DWORD mode, DWORD allowed) {
  const bool known = (mode & ~(AccessMask | ShareMask | allowed)) == 0;
  if (!known || (mode & AccessMask) == 3) return STG_E_INVALIDFLAG;
  return (mode & ShareMask) == STGM_SHARE_EXCLUSIVE ? S_OK : STG_E_INVALIDFLAG;
}

std::uint64_t TimeOf(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

}  // namespace

void CompoundStorage::BecomeRoot(std::unique_ptr<CompoundContents> document,
                                 std::unique_ptr<OLECHAR[]> name) {
  owned_ = std::move(document);
  rootName_ = std::move(name);
}

HRESULT CompoundStorage::QueryInterface(REFIID riid, void** ppvObject) {
  if (ppvObject == nullptr) return E_POINTER;
  *ppvObject = nullptr;
  if (riid != IID_IUnknown && riid != IID_IStorage && riid != IID_CompoundStorage) {
    return E_NOINTERFACE;
  }
  *ppvObject = static_cast<IStorage*>(this);
  AddRef();
  return S_OK;
}

ULONG CompoundStorage::AddRef() { return ++references_; }

ULONG CompoundStorage::Release() {
  const ULONG left = --references_;
  if (left > 0) return left;
  if (owned_) {
    RevertTree(*owned_, owned_->Root());
    owned_->Finish();
  }
  delete this;
  return 0;
}

HRESULT CompoundStorage::Find(const OLECHAR* text, CompoundName* name,
                              CompoundEntry** found) const {
  if (IsReverted()) return STG_E_REVERTED;
  // Files of others may hold names that new elements cannot have.
  const NameRules rules = document_->Written() != nullptr ? NameRules::New : NameRules::Existing;
  if (!MakeName(text, name, rules)) return STG_E_INVALIDNAME;
  *found = document_->Find(entry_, *name);
  return *found != nullptr ? S_OK : STG_E_FILENOTFOUND;
}

HRESULT CompoundStorage::FindOpenable(const OLECHAR* text, bool stream, DWORD openMode,
                                      CompoundEntry** found) const {
  CompoundName name;
  HRESULT result = CheckMode(openMode, 0);
  if (SUCCEEDED(result)) result = Find(text, &name, found);
  if (FAILED(result)) return result;
  if ((*found)->IsStream() != stream) return STG_E_FILENOTFOUND;
  const bool permitted = IsWritable() || (openMode & AccessMask) == STGM_READ;
  return permitted && (*found)->opened == nullptr ? S_OK : STG_E_ACCESSDENIED;
}

HRESULT CompoundStorage::FindReplaceable(const OLECHAR* text, DWORD createMode, CompoundName* name,
                                         CompoundEntry** old) const {
  HRESULT result = Find(text, name, old);
  if (FAILED(result) && result != STG_E_FILENOTFOUND) return result;
  result = CheckMode(createMode, STGM_CREATE);
  if (FAILED(result)) return result;
  if (!IsWritable()) return STG_E_ACCESSDENIED;
  const bool refused = *old != nullptr && (createMode & STGM_CREATE) == 0;
  return refused ? STG_E_FILEALREADYEXISTS : S_OK;
}

template <class Object, class Interface>
HRESULT CompoundStorage::Create(const OLECHAR* text, DWORD createMode, Interface** created) {
  CompoundName name;
  CompoundEntry* old = nullptr;
  const HRESULT result = FindReplaceable(text, createMode, &name, &old);
  if (FAILED(result)) return result;
  CompoundEntry* made = nullptr;
  const bool isStream = std::is_same_v<Interface, IStream>;
  const Outcome added = document_->Written()->AddEntry(entry_, name, isStream, &made);
  if (added != Outcome::Done) return ResultOf(added);
  auto* object = new (std::nothrow) Object(document_, made, createMode & ~STGM_CREATE);
  if (object == nullptr) {
    document_->Written()->Destroy(made);
    return E_OUTOFMEMORY;
  }
  // Nothing can fail any more, so the old element may go.
  if (old != nullptr) {
    RevertTree(*document_, old);
    document_->Written()->Destroy(old);
  }
  const std::uint64_t now = Touch(*document_, *entry_).modified;
  if (!isStream) made->storage->created = made->storage->modified = now;
  *created = object;
  return S_OK;
}

HRESULT CompoundStorage::CreateStream(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                                      DWORD reserved2, IStream** ppstm) {
  if (ppstm == nullptr) return STG_E_INVALIDPOINTER;
  *ppstm = nullptr;
  if (reserved1 != 0 || reserved2 != 0) return STG_E_INVALIDPARAMETER;
  return Guarded([&] { return Create<CompoundStream>(pwcsName, grfMode, ppstm); });
}

HRESULT CompoundStorage::OpenStream(const OLECHAR* pwcsName, void* reserved1, DWORD grfMode,
                                    DWORD reserved2, IStream** ppstm) {
  if (ppstm == nullptr) return STG_E_INVALIDPOINTER;
  *ppstm = nullptr;
  if (IsReverted()) return STG_E_REVERTED;
  if (reserved1 != nullptr || reserved2 != 0) return STG_E_INVALIDPARAMETER;
  CompoundEntry* found = nullptr;
  const HRESULT result = FindOpenable(pwcsName, true, grfMode, &found);
  if (FAILED(result)) return result;
  *ppstm = new (std::nothrow) CompoundStream(document_, found, grfMode);
  return *ppstm != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT CompoundStorage::CreateStorage(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                                       DWORD reserved2, IStorage** ppstg) {
  if (ppstg == nullptr) return STG_E_INVALIDPOINTER;
  *ppstg = nullptr;
  if (reserved1 != 0 || reserved2 != 0) return STG_E_INVALIDPARAMETER;
  return Guarded([&] { return Create<CompoundStorage>(pwcsName, grfMode, ppstg); });
}

HRESULT CompoundStorage::OpenStorage(const OLECHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode,
                                     SNB snbExclude, DWORD reserved, IStorage** ppstg) {
  if (ppstg == nullptr) return STG_E_INVALIDPOINTER;
  *ppstg = nullptr;
  if (IsReverted()) return STG_E_REVERTED;
  if (pstgPriority != nullptr || snbExclude != nullptr || reserved != 0) {
    return STG_E_INVALIDPARAMETER;
  }
  CompoundEntry* found = nullptr;
  const HRESULT result = FindOpenable(pwcsName, false, grfMode, &found);
  if (FAILED(result)) return result;
  *ppstg = new (std::nothrow) CompoundStorage(document_, found, grfMode);
  return *ppstg != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT CompoundStorage::Commit(DWORD grfCommitFlags) {
  if (IsReverted()) return STG_E_REVERTED;
  if ((grfCommitFlags & ~CommitFlags) != 0) return STG_E_INVALIDFLAG;
  if (document_->Written() == nullptr) return STG_E_ACCESSDENIED;
  const bool toDisk =
      owned_ != nullptr && (grfCommitFlags & STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE) == 0;
  return Guarded([&] { return document_->Written()->Flush(toDisk); });
}

HRESULT CompoundStorage::Revert() { return IsReverted() ? STG_E_REVERTED : S_OK; }

HRESULT CompoundStorage::EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                      IEnumSTATSTG** ppenum) {
  if (ppenum == nullptr) return STG_E_INVALIDPOINTER;
  *ppenum = nullptr;
  if (IsReverted()) return STG_E_REVERTED;
  if (reserved1 != 0 || reserved2 != nullptr || reserved3 != 0) return STG_E_INVALIDPARAMETER;
  return Guarded([&] {
    *ppenum = NewEnumerator(document_, entry_);
    return S_OK;
  });
}

HRESULT CompoundStorage::DestroyElement(const OLECHAR* pwcsName) {
  CompoundName name;
  CompoundEntry* found = nullptr;
  const HRESULT result = Find(pwcsName, &name, &found);
  if (FAILED(result)) return result;
  if (!IsWritable()) return STG_E_ACCESSDENIED;
  RevertTree(*document_, found);
  document_->Written()->Destroy(found);
  Touch(*document_, *entry_);
  return S_OK;
}

HRESULT CompoundStorage::RenameElement(const OLECHAR* pwcsOldName, const OLECHAR* pwcsNewName) {
  CompoundName name;
  CompoundName newName;
  CompoundEntry* found = nullptr;
  CompoundEntry* other = nullptr;
  HRESULT result = Find(pwcsOldName, &name, &found);
  if (FAILED(result)) return result;
  result = Find(pwcsNewName, &newName, &other);
  if (FAILED(result) && result != STG_E_FILENOTFOUND) return result;
  if (!IsWritable() || found->opened != nullptr) return STG_E_ACCESSDENIED;
  if (other != nullptr && other != found) return STG_E_FILEALREADYEXISTS;
  document_->Written()->Move(found, entry_, newName);
  Touch(*document_, *entry_);
  return S_OK;
}

HRESULT CompoundStorage::SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime,
                                         const FILETIME* /*patime*/, const FILETIME* pmtime) {
  if (IsReverted()) return STG_E_REVERTED;
  CompoundName name;
  CompoundEntry* found = entry_;
  const HRESULT result = pwcsName == nullptr ? S_OK : Find(pwcsName, &name, &found);
  if (FAILED(result)) return result;
  if (!IsWritable()) return STG_E_ACCESSDENIED;
  if (found->IsStream()) return S_OK;
  StorageInfo& info = document_->Written()->Change(*found);
  if (pctime != nullptr) info.created = TimeOf(*pctime);
  if (pmtime != nullptr) info.modified = TimeOf(*pmtime);
  return S_OK;
}

HRESULT CompoundStorage::SetClass(REFCLSID clsid) {
  if (IsReverted()) return STG_E_REVERTED;
  if (!IsWritable()) return STG_E_ACCESSDENIED;
  std::memcpy(Touch(*document_, *entry_).classId.data(), &clsid, sizeof clsid);
  return S_OK;
}

HRESULT CompoundStorage::SetStateBits(DWORD grfStateBits, DWORD grfMask) {
  if (IsReverted()) return STG_E_REVERTED;
  if (!IsWritable()) return STG_E_ACCESSDENIED;
  DWORD& bits = Touch(*document_, *entry_).stateBits;
  bits = (bits & ~grfMask) | (grfStateBits & grfMask);
  return S_OK;
}

HRESULT CompoundStorage::Stat(STATSTG* pstatstg, DWORD grfStatFlag) {
  if (IsReverted()) return STG_E_REVERTED;
  if (pstatstg == nullptr) return STG_E_INVALIDPOINTER;
  if (grfStatFlag > STATFLAG_NONAME) return STG_E_INVALIDFLAG;
  if (!owned_ || grfStatFlag == STATFLAG_NONAME) {
    return StatEntry(*entry_, grfStatFlag, mode_, pstatstg);
  }
  StatEntry(*entry_, STATFLAG_NONAME, mode_, pstatstg);
  const std::size_t bytes = (std::wcslen(rootName_.get()) + 1) * sizeof(OLECHAR);
  pstatstg->pwcsName = static_cast<OLECHAR*>(CoTaskMemAlloc(bytes));
  if (pstatstg->pwcsName == nullptr) return E_OUTOFMEMORY;
  std::memcpy(pstatstg->pwcsName, rootName_.get(), bytes);
  return S_OK;
}
