// Opening files that exist, for reading.
#include <string>

#include "compound/read_document.h"
#include "platform/compound_storage.h"
#include "platform/path.h"
#include "platform/results.h"
#include "platform/utf8.h"

namespace {

constexpr DWORD AccessMask = 3;
constexpr DWORD ShareMask = 0x70;

/// Reading needs a file that does not change meanwhile; a transacted reader has a copy elsewhere
/// and may therefore allow writers.
HRESULT CheckMode(DWORD mode) {
  const DWORD share = mode & ShareMask;
  if ((mode & ~(AccessMask | ShareMask | STGM_TRANSACTED)) != 0) return STG_E_INVALIDFLAG;
  if ((mode & AccessMask) > STGM_READWRITE) return STG_E_INVALIDFLAG;
  const bool known = share == STGM_SHARE_EXCLUSIVE || share == STGM_SHARE_DENY_WRITE ||
                     (share == STGM_SHARE_DENY_NONE && (mode & STGM_TRANSACTED) != 0);
  return known ? S_OK : STG_E_INVALIDFLAG;
}

HRESULT PathOf(const WCHAR* name, std::string* path) {
  std::string text;
  if (name == nullptr || *name == 0 || !ToUtf8(name, &text)) return STG_E_INVALIDNAME;
  *path = NativePath(text.c_str()).Text();
  return S_OK;
}

HRESULT Open(const WCHAR* name, DWORD mode, std::uint32_t* sectorSize, IStorage** opened) {
  HRESULT result = CheckMode(mode);
  if (FAILED(result)) return result;
  return Guarded([&]() -> HRESULT {
    std::string path;
    result = PathOf(name, &path);
    if (FAILED(result)) return result;
    auto rootName = CopyOf(name);
    auto document = std::make_unique<ReadDocument>();
    const bool exclusive = (mode & ShareMask) == STGM_SHARE_EXCLUSIVE;
    const Outcome outcome = document->Open(path.c_str(), exclusive);
    if (outcome != Outcome::Done) return ResultOf(outcome);
    // What else is wrong with the file is more worth telling.
    if ((mode & AccessMask) != STGM_READ) return STG_E_ACCESSDENIED;
    *sectorSize = document->SectorSize();
    auto* root = new CompoundStorage(document.get(), document->Root(), mode);
    root->BecomeRoot(std::move(document), std::move(rootName));
    *opened = root;
    return S_OK;
  });
}

HRESULT OpenEx(const WCHAR* name, DWORD mode, DWORD format, DWORD attributes, STGOPTIONS* options,
               REFIID id, void** opened) {
  if (opened == nullptr) return STG_E_INVALIDPOINTER;
  *opened = nullptr;
  const bool isDocfile =
      format == STGFMT_DOCFILE || format == STGFMT_STORAGE || format == STGFMT_ANY;
  const bool areOptions =
      options == nullptr ||
      ((options->usVersion == 1 || options->usVersion == 2) && options->reserved == 0);
  if (!isDocfile || attributes != 0 || !areOptions) return STG_E_INVALIDPARAMETER;
  if (id != IID_IStorage && id != IID_IUnknown) return E_NOINTERFACE;
  IStorage* storage = nullptr;
  std::uint32_t sectorSize = 0;
  const HRESULT result = Open(name, mode, &sectorSize, &storage);
  if (SUCCEEDED(result) && options != nullptr) options->ulSectorSize = sectorSize;
  *opened = storage;
  return result;
}

HRESULT OpenOld(const WCHAR* name, const IStorage* priority, DWORD mode, const LPOLESTR* exclude,
                DWORD reserved, IStorage** opened) {
  if (opened == nullptr) return STG_E_INVALIDPOINTER;
  *opened = nullptr;
  if (priority != nullptr || exclude != nullptr || reserved != 0) return STG_E_INVALIDPARAMETER;
  std::uint32_t sectorSize = 0;
  return Open(name, mode, &sectorSize, opened);
}

}  // namespace

HRESULT StgOpenStorageEx(const WCHAR* pwcsName, DWORD grfMode, DWORD stgfmt, DWORD grfAttrs,
                         STGOPTIONS* pStgOptions, PSECURITY_DESCRIPTOR /*unused*/, REFIID riid,
                         void** ppObjectOpen) {
  return Remembered(OpenEx(pwcsName, grfMode, stgfmt, grfAttrs, pStgOptions, riid, ppObjectOpen));
}

HRESULT StgOpenStorage(const WCHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode, SNB snbExclude,
                       DWORD reserved, IStorage** ppstgOpen) {
  return Remembered(OpenOld(pwcsName, pstgPriority, grfMode, snbExclude, reserved, ppstgOpen));
}

HRESULT StgIsStorageFile(const WCHAR* pwcsName) {
  return Guarded([&] {
    std::string path;
    HRESULT result = PathOf(pwcsName, &path);
    bool looks = false;
    if (SUCCEEDED(result)) result = ResultOf(SectorSource::LooksCompound(path.c_str(), &looks));
    return SUCCEEDED(result) && !looks ? S_FALSE : result;
  });
}
