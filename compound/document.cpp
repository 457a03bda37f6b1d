#include "compound/document.h"

#include <cstddef>
#include <new>

#include "compound/layout.h"
#include "compound/tables.h"

CompoundDocument::CompoundDocument(const CompoundParameters& parameters)
    : parameters_(parameters), streams_(parameters_, directory_, file_) {}

Outcome CompoundDocument::Create(const char* path) {
  const auto size = static_cast<std::size_t>(FileSize(parameters_, CountTables(parameters_, {})));
  const Outcome outcome = file_.Create(path, size);
  return outcome == Outcome::Done ? streams_.SecureEntries(1) : outcome;
}

Outcome CompoundDocument::AddEntry(CompoundEntry* parent, const CompoundName& name, bool isStream,
                                   CompoundEntry** entry) {
  const Outcome outcome = streams_.SecureEntries(std::uint64_t{directory_.Count()} + 1);
  if (outcome != Outcome::Done) return outcome;
  *entry = directory_.Add(parent, name, isStream);
  changed_ = true;
  return Outcome::Done;
}

void CompoundDocument::Destroy(CompoundEntry* entry) {
  changed_ = true;
  // From leaf to leaf without recursion: a tree may be as deep as its maker liked.
  CompoundEntry* at = entry;
  for (;;) {
    while (!at->IsStream() && at->storage->firstChild != nullptr) at = at->storage->firstChild;
    CompoundEntry* parent = at->parent;
    const bool last = at == entry;
    streams_.Clear(*at);
    directory_.Remove(at);
    if (last) return;
    at = parent;
  }
}

void CompoundDocument::Move(CompoundEntry* entry, CompoundEntry* parent, const CompoundName& name) {
  changed_ = true;
  directory_.Move(entry, parent, name);
}

StorageInfo& CompoundDocument::Change(CompoundEntry& storage) {
  changed_ = true;
  return *storage.storage;
}

Outcome CompoundDocument::Read(CompoundEntry& stream, std::uint64_t offset, void* data,
                               std::size_t size, std::size_t* done) {
  return streams_.Read(stream, offset, data, size, done);
}

Outcome CompoundDocument::Write(CompoundEntry& stream, std::uint64_t offset, const void* data,
                                std::size_t size, std::size_t* done) {
  changed_ = true;
  return streams_.Write(stream, offset, data, size, done);
}

Outcome CompoundDocument::Resize(CompoundEntry& stream, std::uint64_t size) {
  changed_ = true;
  return streams_.Resize(stream, size);
}

Outcome CompoundDocument::Flush(bool toDisk) {
  if (changed_) {
    const Outcome outcome = WriteFile();
    if (outcome != Outcome::Done) return outcome;
    changed_ = false;
  }
  return toDisk ? file_.Wait() : Outcome::Done;
}

Outcome CompoundDocument::WriteFile() {
  streams_.TrimMiniStream();
  std::uint64_t size = 0;
  const Outcome outcome =
      WriteTables({parameters_, directory_, streams_.Space(), streams_.MiniSpace(),
                   streams_.MiniStream(), streams_.PlaceOfTables()},
                  file_, &size);
  if (outcome != Outcome::Done) return outcome;
  streams_.ForgetTableSpace();
  return file_.Flush(size);
}

void CompoundDocument::Finish() {
  try {
    static_cast<void>(Flush(false));  // nobody is left to tell
  } catch (const std::bad_alloc&) {
  }
  file_.Close();
}
