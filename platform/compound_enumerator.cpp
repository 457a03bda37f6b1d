#include "platform/compound_enumerator.h"

#include <algorithm>

#include "compound/directory.h"
#include "platform/element.h"
#include "platform/results.h"

HRESULT CompoundEnumerator::QueryInterface(REFIID riid, void** ppvObject) {
  if (ppvObject == nullptr) return E_POINTER;
  *ppvObject = nullptr;
  if (riid != IID_IUnknown && riid != IID_IEnumSTATSTG) return E_NOINTERFACE;
  *ppvObject = static_cast<IEnumSTATSTG*>(this);
  AddRef();
  return S_OK;
}

ULONG CompoundEnumerator::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT CompoundEnumerator::Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) {
  if (pceltFetched != nullptr) *pceltFetched = 0;
  if (IsReverted()) return STG_E_REVERTED;
  if (rgelt == nullptr || (pceltFetched == nullptr && celt != 1)) return STG_E_INVALIDPOINTER;
  ULONG fetched = 0;
  for (; fetched < celt && position_ < elements_.size(); ++fetched) {
    const Element& element = elements_[position_];
    OLECHAR* name = NewWideName(element.name);
    if (name == nullptr) {
      position_ -= fetched;
      while (fetched > 0) CoTaskMemFree(rgelt[--fetched].pwcsName);
      return E_OUTOFMEMORY;
    }
    rgelt[fetched] = element.stat;
    rgelt[fetched].pwcsName = name;
    ++position_;
  }
  if (pceltFetched != nullptr) *pceltFetched = fetched;
  return fetched == celt ? S_OK : S_FALSE;
}

HRESULT CompoundEnumerator::Skip(ULONG celt) {
  if (IsReverted()) return STG_E_REVERTED;
  const std::size_t skipped = std::min<std::size_t>(celt, elements_.size() - position_);
  position_ += skipped;
  return skipped == celt ? S_OK : S_FALSE;
}

HRESULT CompoundEnumerator::Reset() {
  if (IsReverted()) return STG_E_REVERTED;
  position_ = 0;
  return S_OK;
}

HRESULT CompoundEnumerator::Clone(IEnumSTATSTG** ppenum) {
  if (ppenum == nullptr) return STG_E_INVALIDPOINTER;
  *ppenum = nullptr;
  if (IsReverted()) return STG_E_REVERTED;
  return Guarded([&] {
    auto* clone = new CompoundEnumerator(document_, entry_, elements_);
    clone->position_ = position_;
    *ppenum = clone;
    return S_OK;
  });
}

IEnumSTATSTG* NewEnumerator(CompoundContents* document, CompoundEntry* storage) {
  std::vector<CompoundEnumerator::Element> elements;
  for (const CompoundEntry* child : SortedChildren(*storage)) {
    elements.push_back({child->name, {}});
    StatEntry(*child, STATFLAG_NONAME, 0, &elements.back().stat);
  }
  return new CompoundEnumerator(document, storage, std::move(elements));
}
