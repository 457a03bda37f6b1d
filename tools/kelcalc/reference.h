#pragma once

#include <string>
#include <string_view>

namespace kelcalc {

// All three are made from the dispatch tables, the tables of rules and `CaHelpTable`.

/// What --list prints: every operator and function with what it takes and gives.
std::string ListText();

/// What --explain prints about `name`, a function with or without its ";"; empty when there is no
/// such name.
std::string ExplanationText(std::string_view name);

/// The same for all names, as the section of docs/language.md between its two markers.
std::string ReferenceMarkdown();

}  // namespace kelcalc
