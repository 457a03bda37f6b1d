#pragma once

#include <cstdint>

#include "compound/gathering_file.h"
#include "compound/layout.h"
#include "compound/outcome.h"

/// The space that a file's tables need, taken from the disk before the streams that they describe:
/// what was accepted can always be written to its end.
///
/// On a disk that is the space of the whole file. In memory, where a page that is taken and then
/// written is visited twice, streams take their space as they are written; only that of the tables
/// is taken ahead, some way behind the streams, so that they seldom grow into it. The tables still
/// go right behind the streams unless others have taken all space there.
class TableSpace {
 public:
  TableSpace(const CompoundParameters& parameters, GatheringFile& file)
      : parameters_(parameters), file_(file) {}

  /// Takes the space of a file with so much content, streams and tables; in memory only what
  /// writing the streams does not take.
  Outcome Secure(ContentCounts content);

  /// The sector from which on there is space for the tables of this content, which was secured.
  std::uint32_t Place(const ContentCounts& content);

  /// After a flush, which gives back the space behind the end of the file.
  void Forget() { secured_ = {0, 0, 0}; }

 private:
  Outcome TakeTables(const ContentCounts& content);

  const CompoundParameters& parameters_;
  GatheringFile& file_;
  ContentCounts secured_ = {0, 0, 0};
  std::uint64_t tablesAt_ = 0;  // the sector from which on they have space
};
