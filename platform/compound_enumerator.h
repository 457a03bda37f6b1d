#pragma once

#include <vector>

#include "compound/document.h"
#include "compound/open_object.h"
#include "platform/storage.h"

/// The object behind an IEnumSTATSTG: the elements of a storage as they were when it was made.
class CompoundEnumerator final : public IEnumSTATSTG, public OpenObject {
 public:
  struct Element {
    CompoundName name;
    STATSTG stat;  // without its name
  };

  CompoundEnumerator(CompoundContents* openedDocument, CompoundEntry* openedEntry,
                     std::vector<Element> snapshot)
      : OpenObject(openedDocument, openedEntry), elements_(std::move(snapshot)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) override;
  HRESULT STDMETHODCALLTYPE Skip(ULONG celt) override;
  HRESULT STDMETHODCALLTYPE Reset() override;
  HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** ppenum) override;

 private:
  std::vector<Element> elements_;
  std::size_t position_ = 0;
};

/// May throw std::bad_alloc.
IEnumSTATSTG* NewEnumerator(CompoundContents* document, CompoundEntry* storage);
