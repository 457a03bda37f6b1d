#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "calc/dispatch.h"

namespace kelcalc {

/// What --list prints: every operator and function with what it takes and gives.
std::string ListText();

/// One line for each of them: what it is called and what it does.
std::string SummaryText();

/// What --explain prints about `name`, a function with or without its ";"; empty when there is no
/// such name.
std::string ExplanationText(std::string_view name);

/// The same for all names, as the section of docs/language.md between its two markers.
std::string ReferenceMarkdown();

}  // namespace kelcalc
