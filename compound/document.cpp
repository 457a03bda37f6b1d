#include "compound/document.h"

#include <new>

#include "compound/tables.h"

CompoundDocument::CompoundDocument(const CompoundParameters& fileParameters)
    : parameters_(fileParameters), space_(LockedSector(fileParameters)), miniSpace_(MarkFree) {}

HRESULT CompoundDocument::Create(const char* path) {
  const std::uint64_t sectors = CountTables(parameters_, 0, 1, 0).total + 1;
  const HRESULT result = file_.Create(path, sectors * parameters_.sectorSize);
  return FAILED(result) ? result : Secure(0, 1, 0);
}

std::uint64_t CompoundDocument::OffsetOf(std::uint32_t sector) const {
  return (std::uint64_t{sector} + 1) * parameters_.sectorSize;
}

HRESULT CompoundDocument::Secure(std::uint64_t end, std::uint64_t entries, std::uint64_t miniEnd) {
  if (end <= securedEnd_ && entries <= securedEntries_ && miniEnd <= securedMini_) return S_OK;
  const std::uint64_t marks = parameters_.sectorSize / sizeof(std::uint32_t);
  const std::uint64_t records = parameters_.sectorSize / sizeof(CompoundEntryRecord);
  entries = (entries + records - 1) / records * records;
  miniEnd = (miniEnd + marks - 1) / marks * marks;
  const TableCounts counts = CountTables(parameters_, end, entries, miniEnd);
  if (counts.total > LargestFile(parameters_)) return STG_E_MEDIUMFULL;
  const HRESULT result = file_.Reserve((counts.total + 1) * parameters_.sectorSize);
  if (FAILED(result)) return result;
  securedEnd_ = end;
  securedEntries_ = entries;
  securedMini_ = miniEnd;
  return S_OK;
}

HRESULT CompoundDocument::AddEntry(CompoundEntry* parent, const CompoundName& name, bool isStream,
                                   CompoundEntry** entry) {
  const HRESULT result =
      Secure(space_.End(), std::uint64_t{directory_.Count()} + 1, miniSpace_.End());
  if (FAILED(result)) return result;
  *entry = directory_.Add(parent, name, isStream);
  return S_OK;
}

void CompoundDocument::Destroy(CompoundEntry* entry) {
  // From leaf to leaf without recursion: a tree may be as deep as its maker liked.
  CompoundEntry* at = entry;
  for (;;) {
    while (!at->IsStream() && at->storage->firstChild != nullptr) at = at->storage->firstChild;
    CompoundEntry* parent = at->parent;
    const bool last = at == entry;
    Trim(at->chain, IsMini(at->size), 0);
    at->chain.Free();
    directory_.Remove(at);
    if (last) return;
    at = parent;
  }
}

HRESULT CompoundDocument::Flush(bool toDisk) {
  TrimMiniStream();
  CompoundWriter writer(*this);
  const HRESULT result = writer.Write();
  if (FAILED(result)) return result;
  // The file keeps no space beyond its end, so the next growth has to take it again.
  securedEnd_ = securedEntries_ = securedMini_ = 0;
  return file_.Flush(writer.FileSize(), toDisk);
}

void CompoundDocument::Finish() {
  try {
    Flush(false);
  } catch (const std::bad_alloc&) {
    // Nobody is left to tell.
  }
  file_.Close();
  miniStream_.Free();
}
