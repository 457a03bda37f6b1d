#pragma once

#include <memory>

#include "compound/document.h"
#include "compound/open_object.h"
#include "platform/storage.h"

/// Our own storages answer to it, so that they know one another among foreign ones.
constexpr IID IID_CompoundStorage = {
    0x8B0A6D52, 0x3F1E, 0x4C77, {0x9A, 0x41, 0x6E, 0xD2, 0x05, 0xB8, 0x77, 0x1C}};

/// The object behind an IStorage. The root's owns the document.
class CompoundStorage final : public IStorage, public OpenObject {
 public:
  CompoundStorage(CompoundContents* openedDocument, CompoundEntry* openedEntry, DWORD openMode)
      : OpenObject(openedDocument, openedEntry), mode_(openMode) {}

  /// Makes this storage the root, with which the document ends. `name` is what its Stat tells.
  void BecomeRoot(std::unique_ptr<CompoundContents> document, std::unique_ptr<OLECHAR[]> name);

  CompoundContents* Document() const { return document_; }
  CompoundEntry* Entry() const { return entry_; }

  /// Whether a stream of this name in `to` would take the place of this storage or of one that
  /// holds it, and destroy what is being copied.
  bool WouldReplaceThis(IStorage* to, const OLECHAR* newName) const;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                                         DWORD reserved2, IStream** ppstm) override;
  HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR* pwcsName, void* reserved1, DWORD grfMode,
                                       DWORD reserved2, IStream** ppstm) override;
  HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1,
                                          DWORD reserved2, IStorage** ppstg) override;
  HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR* pwcsName, IStorage* pstgPriority,
                                        DWORD grfMode, SNB snbExclude, DWORD reserved,
                                        IStorage** ppstg) override;
  HRESULT STDMETHODCALLTYPE CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB snbExclude,
                                   IStorage* pstgDest) override;
  HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR* pwcsName, IStorage* pstgDest,
                                          const OLECHAR* pwcsNewName, DWORD grfFlags) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) override;
  HRESULT STDMETHODCALLTYPE Revert() override;
  HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                         IEnumSTATSTG** ppenum) override;
  HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR* pwcsName) override;
  HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR* pwcsOldName,
                                          const OLECHAR* pwcsNewName) override;
  HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime,
                                            const FILETIME* patime,
                                            const FILETIME* pmtime) override;
  HRESULT STDMETHODCALLTYPE SetClass(REFCLSID clsid) override;
  HRESULT STDMETHODCALLTYPE SetStateBits(DWORD grfStateBits, DWORD grfMask) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) override;

 private:
  bool IsWritable() const { return (mode_ & 3) != STGM_READ; }
  HRESULT Find(const OLECHAR* text, CompoundName* name, CompoundEntry** found) const;
  HRESULT FindOpenable(const OLECHAR* text, bool stream, DWORD openMode,
                       CompoundEntry** found) const;
  HRESULT FindReplaceable(const OLECHAR* text, DWORD createMode, CompoundName* name,
                          CompoundEntry** old) const;
  template <class Object, class Interface>
  HRESULT Create(const OLECHAR* text, DWORD createMode, Interface** created);
  bool IsWithin(const CompoundEntry* ancestor) const;

  DWORD mode_;
  std::unique_ptr<CompoundContents> owned_;  // of the root only
  std::unique_ptr<OLECHAR[]> rootName_;      // of the root only: the file's name
};

/// Creates the file with parameters of any kind and gives its root storage to the caller. `name`
/// is what the root's Stat tells. May throw std::bad_alloc.
HRESULT CreateCompoundFile(const char* path, const OLECHAR* name,
                           const CompoundParameters& parameters, IStorage** storage);

/// A copy of a path, for a root's Stat. May throw std::bad_alloc.
std::unique_ptr<OLECHAR[]> CopyOf(const OLECHAR* name);

/// Keeps a result for KelLastStorageResult, and returns it.
HRESULT Remembered(HRESULT result);
