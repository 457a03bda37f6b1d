#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "calc/name_pool.h"

class CaList;
struct CaListNode;

/// Finds a variable by its pooled name without walking the table, with the same answer as the
/// walk: the most recent variable of that name.
///
/// It is a copy of what the list says and is made anew whenever the list has been changed behind
/// its back, which shows in the number of entries or in the head.
class CaVariableIndex {
 public:
  /// The node of the variable called `name`, or null.
  CaListNode* Find(const CaList& variables, CaPooledName name);

  /// Takes in the new head of `variables`; an older entry of that name has been removed.
  void Store(const CaList& variables);

  /// Starts again from nothing.
  void Forget();

 private:
  struct Slot {
    CaPooledName name{nullptr};
    CaListNode* node = nullptr;
  };

  Slot& SlotFor(CaPooledName name);
  void Put(CaPooledName name, CaListNode* node);
  void Rebuild(const CaList& variables);
  void Grow();

  std::vector<Slot> slots_;              // a power of two, at most half full
  std::size_t used_ = 0;
  const CaListNode* head_ = nullptr;     // the list as it was last seen
  std::int32_t count_ = 0;
};
