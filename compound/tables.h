#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "compound/layout.h"
#include "compound/sector_chain.h"
#include "compound/sector_space.h"
#include "platform/storage.h"

class CompoundDocument;
struct CompoundEntry;
struct TreeNode;

/// Writes the tables that make a document's file valid, behind its streams:
///
///   tables    = directory miniFat FAT DIFAT
///   directory = root block*            a block for each storage, breadth first
///   block     = the storage's children in order, so that a tree over them is arithmetic
///   header    = last, at the start of the file
///
/// Needs only space that was reserved before.
class CompoundWriter {
 public:
  explicit CompoundWriter(CompoundDocument& writtenDocument);

  HRESULT Write();

  /// Bytes of the whole file.
  std::uint64_t FileSize() const;

 private:
  /// A run of a chain together with what follows its last sector.
  struct FatRun {
    SectorRun run;
    std::uint32_t after;          // mark of the last sector
    std::uint32_t everyMark = 0;  // mark of all sectors, for those that form no chain; else 0
  };

  std::vector<SectorRun> Place(std::uint32_t count);
  void AddChain(const SectorChain& chain);
  void AddChain(const std::vector<SectorRun>& runs);
  void AddMarked(const std::vector<SectorRun>& runs, std::uint32_t mark);
  void AddMiniChain(const SectorChain& chain);

  HRESULT WriteDirectory();
  HRESULT WriteBlock(const CompoundEntry& storage, std::vector<CompoundEntry*>* storages);
  HRESULT WriteRecord(const CompoundEntry& entry, const TreeNode& node, std::uint32_t base);
  HRESULT PadDirectory();
  HRESULT WriteMiniFat();
  HRESULT WriteFat();
  HRESULT WriteDifat();
  HRESULT WriteHeader();
  HRESULT Put(const std::vector<SectorRun>& runs, std::uint64_t offset, const void* data,
              std::size_t size);

  CompoundDocument& document_;
  TableCounts counts_;
  std::uint32_t next_;  // where the next table goes
  std::vector<SectorRun> directoryRuns_;
  std::vector<SectorRun> miniFatRuns_;
  std::vector<SectorRun> fatRuns_;
  std::vector<SectorRun> difatRuns_;
  std::vector<FatRun> chains_;
  std::vector<std::uint32_t> miniFat_;
  std::vector<std::uint32_t> fatSectors_;
  std::uint32_t writtenEntries_ = 0;
  std::uint32_t nextBlock_ = 1;  // entry number of the next storage's first child
};
