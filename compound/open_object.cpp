#include "compound/open_object.h"

OpenObject::OpenObject(CompoundContents* openedDocument, CompoundEntry* openedEntry)
    : document_(openedDocument), entry_(openedEntry), next_(openedEntry->opened) {
  if (next_ != nullptr) next_->previous_ = this;
  entry_->opened = this;
  ++document_->openObjects;
}

void OpenObject::CutOff() {
  if (entry_ == nullptr) return;
  (previous_ != nullptr ? previous_->next_ : entry_->opened) = next_;
  if (next_ != nullptr) next_->previous_ = previous_;
  --document_->openObjects;
  if (entry_->opened == nullptr) document_->Closed(*entry_);
  document_ = nullptr;
  entry_ = nullptr;
}

void RevertTree(const CompoundContents& contents, CompoundEntry* entry) {
  for (CompoundEntry* at = entry;;) {
    while (at->opened != nullptr) at->opened->CutOff();
    if (contents.openObjects == 0) return;  // nearly always, at the end of a file
    if (!at->IsStream() && at->storage->firstChild != nullptr) {
      at = at->storage->firstChild;
      continue;
    }
    while (at != entry && at->next == nullptr) at = at->parent;
    if (at == entry) return;
    at = at->next;
  }
}
