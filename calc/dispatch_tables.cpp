#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "calc/additive_operators.h"
#include "calc/component_functions.h"
#include "calc/constants.h"
#include "calc/constructor_functions.h"
#include "calc/control_operators.h"
#include "calc/dispatch.h"
#include "calc/file_functions.h"
#include "calc/geometric_operators.h"
#include "calc/multiplicative_operators.h"
#include "calc/name_index.h"
#include "calc/scalar_functions.h"
#include "calc/stack_operators.h"

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

/// Ends compilation; the compiler shows which entry was checked.
void Refuse(const char* reason) { static_cast<void>(reason); }

constexpr void Check(const CaOperatorEntry& entry) {
  if ((entry.pairs == nullptr) == entry.forms.empty()) Refuse("pairs or forms, not both");
  if (!NamesEachTypeOnce(entry.forms)) Refuse("two forms for one type");
  if (*entry.help.summary == '\0' || *entry.help.example == '\0') Refuse("no help");
}

constexpr bool AreSound(std::span<const CaOperatorEntry> table) {
  for (const CaOperatorEntry& entry : table.first(table.size() - 1)) Check(entry);
  return *table.back().name == '\0';
}
static_assert(AreSound(CaOperatorTable));
static_assert(AreSound(CaFunctionTable));

constexpr CaNameIndex OperatorIndex(CaOperatorTable);
constexpr CaNameIndex FunctionIndex(CaFunctionTable);
constexpr CaNameIndex SpecifierIndex(CaSpecifierTable);

}  // namespace

constexpr std::array<const CaOperatorEntry*, 256> CaShortOperators = [] {
  std::array<const CaOperatorEntry*, 256> entries{};
  for (const CaOperatorEntry& entry : CaOperatorTable) {
    const std::string_view name = entry.name;
    if (name.size() == 1) entries[static_cast<unsigned char>(name[0])] = &entry;
  }
  return entries;
}();

const CaOperatorEntry* FindOperator(std::string_view name) { return OperatorIndex.Find(name); }

const CaOperatorEntry* FindFunction(std::string_view name) { return FunctionIndex.Find(name); }
const CaSpecifierEntry* FindSpecifier(std::string_view name) { return SpecifierIndex.Find(name); }
