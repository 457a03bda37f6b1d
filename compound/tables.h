#pragma once

#include <cstdint>

#include "compound/directory.h"
#include "compound/format.h"
#include "compound/gathering_file.h"
#include "compound/outcome.h"
#include "compound/sector_space.h"

/// What the tables of a file describe.
struct TableContents {
  const CompoundParameters& parameters;
  const CompoundDirectory& directory;
  const SectorSpace& space;  // the file's sectors
  const SectorSpace& miniSpace;
  const SectorChain& miniStream;
  std::uint32_t place;  // the sector from which on the tables go
};

/// Writes the tables that make a file valid, behind its streams; `*fileSize` is then its size in
/// bytes:
///
///   tables    = directory miniFat FAT DIFAT
///   directory = root block*            a block for each storage, breadth first
///   block     = the storage's children in order, so that a tree over them is arithmetic
///   header    = last, at the start of the file
///
/// Needs only space that was reserved before. May throw std::bad_alloc.
Outcome WriteTables(const TableContents& contents, GatheringFile& file, std::uint64_t* fileSize);
