#pragma once

#include <memory>
#include <new>

#include "compound/contents.h"
#include "platform/storage.h"

/// What every object on a document has: its count of references and its place among the objects
/// that look at the same entry. The document belongs to the root storage; an object that outlives
/// it, or its own element, is reverted: it lives on without a document.
class OpenObject {
 public:
  OpenObject(CompoundContents* openedDocument, CompoundEntry* openedEntry);
  OpenObject(const OpenObject&) = delete;
  OpenObject& operator=(const OpenObject&) = delete;

  bool IsReverted() const { return document_ == nullptr; }

  /// Cuts the object off. Never fails.
  void CutOff();

 protected:
  ~OpenObject() { CutOff(); }

  CompoundContents* document_;
  CompoundEntry* entry_;
  ULONG references_ = 1;

 private:
  OpenObject* next_;
  OpenObject* previous_ = nullptr;
};

/// Reverts every object on an entry and beneath it.
void RevertTree(CompoundEntry* entry);

/// Runs an operation; no exception leaves it.
template <class Operation>
HRESULT Guarded(const Operation& operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

/// Fills `stat` from an entry. The name is left out with STATFLAG_NONAME.
HRESULT StatEntry(const CompoundEntry& entry, DWORD flags, DWORD mode, STATSTG* stat);

/// Marks a storage as changed now.
void Touch(CompoundEntry* storage);

std::uint64_t TimeNow();
