#include "compound/document.h"

#include <new>

#include "compound/tables.h"

CompoundDocument::CompoundDocument(const CompoundParameters& fileParameters)
    : parameters(fileParameters), space(LockedSector(fileParameters)), miniSpace(MarkFree) {}

HRESULT CompoundDocument::Create(const char* path) {
  const std::uint64_t sectors = CountTables(parameters, 0, 1, 0).total + 1;
  const HRESULT result = file.Create(path, sectors * parameters.sectorSize);
  return FAILED(result) ? result : Secure(0, 1, 0);
}

std::uint64_t CompoundDocument::OffsetOf(std::uint32_t sector) const {
  return (std::uint64_t{sector} + 1) * parameters.sectorSize;
}

HRESULT CompoundDocument::Secure(std::uint64_t end, std::uint64_t entries, std::uint64_t miniEnd) {
  if (end <= securedEnd && entries <= securedEntries && miniEnd <= securedMini) return S_OK;
  const std::uint64_t marks = parameters.sectorSize / sizeof(std::uint32_t);
  const std::uint64_t records = parameters.sectorSize / sizeof(CompoundEntryRecord);
  entries = (entries + records - 1) / records * records;
  miniEnd = (miniEnd + marks - 1) / marks * marks;
  const TableCounts counts = CountTables(parameters, end, entries, miniEnd);
  if (counts.total > LargestFile(parameters)) return STG_E_MEDIUMFULL;
  const HRESULT result = file.Reserve((counts.total + 1) * parameters.sectorSize);
  if (FAILED(result)) return result;
  securedEnd = end;
  securedEntries = entries;
  securedMini = miniEnd;
  return S_OK;
}

HRESULT CompoundDocument::AddEntry(CompoundEntry* parent, const CompoundName& name, bool isStream,
                                   CompoundEntry** entry) {
  const HRESULT result = Secure(space.End(), std::uint64_t{directory.Count()} + 1, miniSpace.End());
  if (FAILED(result)) return result;
  *entry = directory.Add(parent, name, isStream);
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
    directory.Remove(at);
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
  securedEnd = securedEntries = securedMini = 0;
  return file.Flush(writer.FileSize(), toDisk);
}

void CompoundDocument::Finish() {
  try {
    Flush(false);
  } catch (const std::bad_alloc&) {
    // Nobody is left to tell.
  }
  file.Close();
  miniStream.Free();
}
