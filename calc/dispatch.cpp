#include "calc/dispatch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "calc/additive_operators.h"
#include "calc/component_functions.h"
#include "calc/constants.h"
#include "calc/constructor_functions.h"
#include "calc/control_operators.h"
#include "calc/file_functions.h"
#include "calc/geometric_operators.h"
#include "calc/multiplicative_operators.h"
#include "calc/scalar_functions.h"
#include "calc/stack_operators.h"
#include "calc/token_text.h"

constexpr CaOperatorEntry CaOperatorTable[] = {
    operators::Negate,
    operators::PrintTop,
    operators::PrintAllAndClear,
    operators::ShowTop,
    operators::ShowAll,
    operators::Drop,
    operators::DropAll,
    operators::Duplicate,
    operators::Pick,
    operators::Assign,
    operators::ToRadians,
    operators::ToDegrees,
    operators::Sum,
    operators::Difference,
    operators::Product,
    operators::Remainder,
    operators::Quotient,
    operators::Power,
    operators::Magnitude,
    operators::RotationBetween,
    operators::Swap,
    operators::OpenBlock,
    operators::CloseBlock,
    operators::CloseAllBlocks,
    operators::Less,
    operators::LessOrEqual,
    operators::Greater,
    operators::GreaterOrEqual,
    operators::Equal,
    operators::NotEqual,
    operators::Near,
    operators::NotNear,
    {"", nullptr},
};

constexpr CaOperatorEntry CaFunctionTable[] = {
    operators::MakeVector,
    operators::MakePoint,
    operators::MakeMatrix,
    operators::FirstAxisOf,
    operators::ThirdAxisOf,
    operators::TranslationOf,
    operators::MakeQuaternion,
    operators::MakeRotation,
    operators::MakeScale,
    operators::MeasureOf,
    operators::XOf,
    operators::YOf,
    operators::ZOf,
    operators::AngleOf,
    operators::Sine,
    operators::Cosine,
    operators::Tangent,
    operators::ArcSine,
    operators::ArcCosine,
    operators::ArcTangent,
    operators::ArcTangent2,
    operators::Logarithm,
    operators::Exponential,
    operators::SquareRoot,
    operators::Write,
    operators::Read,
    operators::BuildNumber,
    {"", nullptr},
};

constexpr CaSpecifierEntry CaSpecifierTable[] = {
    {"v", ReadVector},   {"p", ReadPoint}, {"m", ReadMatrix}, {"q", ReadQuaternion},
    {"r", ReadRotation}, {"s", ReadScale}, {"", nullptr},
};

namespace {

/// What is wrong with an entry of a table; nothing without a reason.
struct Fault {
  constexpr Fault() = default;
  constexpr Fault(std::string_view entry, std::string_view why) {
    entry.copy(name, CaTokenText::LongestName);
    why.copy(reason, sizeof reason - 1);
  }

  char name[CaTokenText::LongestName + 1] = {};
  char reason[32] = {};
};

constexpr Fault FaultOf(const CaSpecifierEntry&) { return {}; }

constexpr Fault FaultOf(const CaOperatorEntry& entry) {
  if (!NamesEachTypeOnce(entry.forms)) return {entry.name, "two forms for one type"};
  if (*entry.help.summary == '\0' || *entry.help.example == '\0') return {entry.name, "no help"};
  return {};
}

/// The first fault of an entry, or one whose name cannot be read or is there already.
template <typename Entry>
constexpr Fault FirstFault(std::span<const Entry> table) {
  for (std::size_t i = 0; i + 1 < table.size(); ++i) {
    const std::string_view name = table[i].name;
    if (const Fault fault = FaultOf(table[i]); *fault.reason != '\0') return fault;
    if (name.size() > CaTokenText::LongestName) return {name, "too long a name"};
    for (std::size_t k = 0; k < i; ++k) {
      if (name == table[k].name) return {name, "a name that is there already"};
    }
  }
  return *table.back().name == '\0' ? Fault()
                                    : Fault(table.back().name, "no empty name at the end");
}

/// The compiler's message shows the fault, which is a part of the check's own name.
template <Fault Found>
constexpr bool IsWithoutFault() {
  static_assert(*Found.reason == '\0', "a table of names is wrong");
  return true;
}

static_assert(IsWithoutFault<FirstFault<CaOperatorEntry>(CaOperatorTable)>());
static_assert(IsWithoutFault<FirstFault<CaOperatorEntry>(CaFunctionTable)>());
static_assert(IsWithoutFault<FirstFault<CaSpecifierEntry>(CaSpecifierTable)>());

}  // namespace

constexpr std::array<const CaOperatorEntry*, 256> CaShortOperators = [] {
  std::array<const CaOperatorEntry*, 256> entries{};
  for (const CaOperatorEntry& entry : CaOperatorTable) {
    const std::string_view name = entry.name;
    if (name.size() == 1) entries[static_cast<unsigned char>(name[0])] = &entry;
  }
  return entries;
}();

std::string SpellingOf(const CaOperatorEntry& entry) {
  return std::string(entry.sign).append(entry.name);
}
