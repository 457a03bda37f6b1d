#pragma once

#include <cstdint>

#include "compound/contents.h"

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
  std::uint32_t references_ = 1;

 private:
  OpenObject* next_;
  OpenObject* previous_ = nullptr;
};

/// Reverts every object on an entry and beneath it.
void RevertTree(const CompoundContents& contents, CompoundEntry* entry);
