#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelcalc {

/// What --explain and :help print about an operator, a function (with or without its ";"), a type
/// or a topic; empty when there is no such name.
std::string HelpText(std::string_view name);

/// Every name that `HelpText` knows; functions without their ";".
std::vector<std::string> HelpNames();

/// The topics alone, in the order in which a newcomer wants them.
std::vector<std::string> TopicNames();

}  // namespace kelcalc
