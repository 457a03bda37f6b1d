#pragma once

#include <cstdint>

#include "compound/gathering_file.h"
#include "compound/layout.h"
#include "compound/outcome.h"

/// The space that a file's tables need, taken from the disk before the streams that they describe:
/// what was accepted can always be written to its end.
class TableSpace {
 public:
  TableSpace(const CompoundParameters& parameters, GatheringFile& file)
      : parameters_(parameters), file_(file) {}

  /// Takes the space of a file with so much content, streams and tables.
  Outcome Secure(ContentCounts content);

  /// After a flush, which gives back the space behind the end of the file.
  void Forget() { secured_ = {0, 0, 0}; }

 private:
  const CompoundParameters& parameters_;
  GatheringFile& file_;
  ContentCounts secured_ = {0, 0, 0};
};
