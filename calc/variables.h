#pragma once

#include <memory>
#include <string_view>

#include "calc/list.h"
#include "calc/names.h"
#include "calc/object.h"

/// The operations on a list of variables, most recently defined first.
///
/// Each name knows where its variable stands, so that none of them walks the list. The list is
/// what counts: after any change that was not made here, all names look anew. That a change was
/// made shows in the list's number of changes, and a variable that is found must bear the name.
class CaVariables {
 public:
  explicit CaVariables(CaList& list) : list_(list) {}
  CaVariables(const CaVariables&) = delete;
  CaVariables& operator=(const CaVariables&) = delete;

  /// The most recent value of that name, owned by the list; `NothingValue` when there is none.
  const CaValue* Find(const CaName& name) {
    const CaListNode* node = NodeOf(name);
    return node == nullptr ? &NothingValue : &static_cast<const CaVariable*>(node->payload)->value;
  }
  const CaValue* Find(std::string_view name);

  /// The name at `position` from the most recent; null beyond the end. Walks to the position.
  const char* NameAt(int position) const;

  /// Makes `variable`, with `value`, the most recent one, in place of one of the same name. One
  /// without a name is not stored.
  void Define(std::unique_ptr<CaVariable> variable, const CaValue& value);

  /// The same for a variable that is there already. False when there is none called `name`, or
  /// when it holds a text, which copies may share.
  bool Redefine(const CaName& name, const CaValue& value) {
    CaListNode* node = NodeOf(name);
    if (node == nullptr) return false;
    CaValue& stored = static_cast<CaVariable*>(node->payload)->value;
    if (stored.type == TypeString) return false;
    stored = value;
    list_.MoveToFront(node);
    seen_ = list_.changes;
    return true;
  }

  void Destroy();

  CaNames names;

 private:
  CaListNode* NodeOf(const CaName& name) {
    if (list_.changes == seen_ && (name.variable == nullptr || Bears(*name.variable, name))) {
      return name.variable;
    }
    LookAnew();
    return name.variable;
  }

  static bool Bears(const CaListNode& node, const CaName& name) {
    const auto* variable = static_cast<const CaVariable*>(node.payload);
    return variable != nullptr && (variable->name == name.Text() || BearsText(*variable, name));
  }
  static bool BearsText(const CaVariable& variable, const CaName& name);

  void LookAnew();

  CaList& list_;
  std::uint64_t seen_ = 0;  // the changes of the list that the names know of
};
