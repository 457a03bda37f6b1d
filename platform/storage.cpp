#include <cstdlib>
#include <cwchar>
#include <memory>
#include <string>

#include "compound/document.h"
#include "platform/compound_storage.h"
#include "platform/element.h"
#include "platform/path.h"
#include "platform/results.h"
#include "platform/utf8.h"

namespace {

constexpr DWORD RootMode = STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr DWORD CreationMode = STGM_CREATE | RootMode;

HRESULT SectorSizeOf(const STGOPTIONS* options, std::uint32_t* sectorSize) {
  if (options == nullptr) return S_OK;
  const bool known = options->usVersion == 1 && options->reserved == 0 &&
                     (options->ulSectorSize == 512 || options->ulSectorSize == 4096);
  if (!known) return STG_E_INVALIDPARAMETER;
  *sectorSize = options->ulSectorSize;
  return S_OK;
}

thread_local HRESULT lastResult = S_OK;

}  // namespace

HRESULT Remembered(HRESULT result) { return lastResult = result; }

HRESULT KelLastStorageResult() { return lastResult; }

std::unique_ptr<OLECHAR[]> CopyOf(const OLECHAR* name) {
  const std::size_t length = std::wcslen(name) + 1;
  auto copy = std::make_unique<OLECHAR[]>(length);
  std::wmemcpy(copy.get(), name, length);
  return copy;
}

HRESULT CreateCompoundFile(const char* path, const OLECHAR* name,
                           const CompoundParameters& parameters, IStorage** storage) {
  auto rootName = CopyOf(name);
  auto document = std::make_unique<CompoundDocument>(parameters);
  auto root = std::make_unique<CompoundStorage>(document.get(), document->Root(), RootMode);
  const Outcome outcome = document->Create(path);
  if (outcome != Outcome::Done) return ResultOf(outcome);
  // Nothing can fail any more: the file has been emptied.
  Touch(*document, *document->Root());
  root->BecomeRoot(std::move(document), std::move(rootName));
  *storage = root.release();
  return S_OK;
}

static HRESULT Create(const WCHAR* pwcsName, DWORD grfMode, DWORD stgfmt, DWORD grfAttrs,
                      const STGOPTIONS* pStgOptions, REFIID riid, void** ppObjectOpen) {
  if (ppObjectOpen == nullptr) return STG_E_INVALIDPOINTER;
  *ppObjectOpen = nullptr;
  if (stgfmt != STGFMT_DOCFILE || grfAttrs != 0) return STG_E_INVALIDPARAMETER;
  if (grfMode != CreationMode) return STG_E_INVALIDFLAG;
  if (riid != IID_IStorage && riid != IID_IUnknown) return E_NOINTERFACE;
  CompoundParameters parameters;
  const HRESULT options = SectorSizeOf(pStgOptions, &parameters.sectorSize);
  if (FAILED(options)) return options;
  if (pwcsName == nullptr || *pwcsName == 0) return STG_E_INVALIDNAME;
  return Guarded([&]() -> HRESULT {
    std::string path;
    if (!ToUtf8(pwcsName, &path)) return STG_E_INVALIDNAME;
    IStorage* storage = nullptr;
    const HRESULT result =
        CreateCompoundFile(NativePath(path.c_str()).Text(), pwcsName, parameters, &storage);
    *ppObjectOpen = storage;
    return result;
  });
}

HRESULT StgCreateStorageEx(const WCHAR* pwcsName, DWORD grfMode, DWORD stgfmt, DWORD grfAttrs,
                           STGOPTIONS* pStgOptions, PSECURITY_DESCRIPTOR /*unused*/, REFIID riid,
                           void** ppObjectOpen) {
  return Remembered(Create(pwcsName, grfMode, stgfmt, grfAttrs, pStgOptions, riid, ppObjectOpen));
}

LPVOID CoTaskMemAlloc(SIZE_T cb) { return std::malloc(cb == 0 ? 1 : cb); }

LPVOID CoTaskMemRealloc(LPVOID pv, SIZE_T cb) {
  if (cb > 0 || pv == nullptr) return std::realloc(pv, cb == 0 ? 1 : cb);
  std::free(pv);
  return nullptr;
}

void CoTaskMemFree(LPVOID pv) { std::free(pv); }
