#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "calc/list.h"
#include "calc/name_pool.h"

/// Finds a variable by the number of its pooled name without walking the table, with the same
/// answer as the walk: the most recent variable of that name.
///
/// It is a copy of what the list says and is made anew whenever the list has been changed behind
/// its back, which shows in the number of entries or in the head.
class CaVariableIndex {
 public:
  /// The node of the variable called `name`, or null.
  CaListNode* Find(const CaList& variables, CaPooledName name) {
    if (variables.head != head_ || variables.count != count_) Rebuild(variables);
    const std::size_t number = NumberOf(name);
    return number < nodes_.size() ? nodes_[number] : nullptr;
  }

  /// Takes in the new head of `variables`, called `name`; an older one of that name is gone.
  void Store(const CaList& variables, CaPooledName name) {
    Put(variables.head, name);
    head_ = variables.head;
    count_ = variables.count;
  }

  /// Takes in that a variable which is known already became the head of `variables`.
  void StoreMoved(const CaList& variables) { head_ = variables.head; }

  /// Starts again from nothing.
  void Forget();

 private:
  void Put(CaListNode* node, CaPooledName name) {
    const std::size_t number = NumberOf(name);
    if (number >= nodes_.size()) nodes_.resize(number * 2 + 1);
    nodes_[number] = node;
  }
  void Rebuild(const CaList& variables);

  std::vector<CaListNode*> nodes_;    // by the number of the name; null where there is none
  const CaListNode* head_ = nullptr;  // the list as it was last seen
  std::int32_t count_ = 0;
};
