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

/// Not for the compiler: it stops here and shows the calls that led here, with the name.
void Refuse(const char* /*name*/, const char* /*reason*/) {}

constexpr void CheckName(const char* name, bool isLong, bool isDouble) {
  if (isLong) Refuse(name, "too long a name");
  if (isDouble) Refuse(name, "a name that the table has already");
}

/// Ends compilation, and shows its name, at an entry whose name cannot be read or is there already.
template <typename Entry>
constexpr bool CheckNames(std::span<const Entry> table) {
  for (std::size_t i = 0; i + 1 < table.size(); ++i) {
    const std::string_view name = table[i].name;
    bool isDouble = false;
    for (std::size_t k = 0; k < i; ++k) isDouble = isDouble || name == table[k].name;
    CheckName(table[i].name, name.size() > CaTokenText::LongestName, isDouble);
  }
  return *table.back().name == '\0';
}

constexpr void CheckEntry(const char* name, const CaOperatorEntry& entry) {
  if (!NamesEachTypeOnce(entry.forms)) Refuse(name, "two forms for one type");
  if (*entry.help.summary == '\0' || *entry.help.example == '\0') Refuse(name, "no help");
}

constexpr bool CheckEntries(std::span<const CaOperatorEntry> table) {
  for (const CaOperatorEntry& entry : table.first(table.size() - 1)) CheckEntry(entry.name, entry);
  return CheckNames(table);
}

static_assert(CheckEntries(CaOperatorTable));
static_assert(CheckEntries(CaFunctionTable));
static_assert(CheckNames<CaSpecifierEntry>(CaSpecifierTable));

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
