#pragma once

#include <new>

#include "compound/outcome.h"
#include "platform/storage.h"

/// What the storage interface says for an outcome.
HRESULT ResultOf(Outcome outcome);

inline HRESULT ResultOf(HRESULT result) { return result; }

/// Runs an operation; no exception leaves it.
template <class Operation>
HRESULT Guarded(const Operation& operation) {
  try {
    return ResultOf(operation());
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}
