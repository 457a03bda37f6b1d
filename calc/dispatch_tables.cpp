#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "calc/additive_operators.h"
#include "calc/block_operators.h"
#include "calc/comparison_operators.h"
#include "calc/component_functions.h"
#include "calc/constants.h"
#include "calc/constructor_functions.h"
#include "calc/dispatch.h"
#include "calc/file_functions.h"
#include "calc/geometric_operators.h"
#include "calc/multiplicative_operators.h"
#include "calc/name_index.h"
#include "calc/scalar_functions.h"
#include "calc/stack_operators.h"

constexpr CaOperatorEntry CaOperatorTable[] = {
    {"~", Negate, 0},
    {"#", PrintTop, 0},
    {"##", PrintAllAndClear, 0},
    {"?", ShowTop, 0},
    {"??", ShowAll, 0},
    {"\\", Drop, 0},
    {"\\\\", DropAll, 0},
    {"'", Duplicate, 0},
    {"''", Pick, 0},
    {":", Assign, 0},
    {">>", ToRadians, 0},
    {"<<", ToDegrees, 0},
    {"+", Sum, 0},
    {"-", Difference, 0},
    {"*", Product, 0},
    {"%", Remainder, 0},
    {"/", Quotient, 0},
    {"^", Power, 0},
    {"$", Magnitude, 0},
    {"@", RotationBetween, 0},
    {"|", Swap, 0},
    {"{", OpenBlock, 1},
    {"}", CloseBlock, 1},
    {"}}", CloseAllBlocks, 1},
    {"<", Less, 0},
    {"<=", LessOrEqual, 0},
    {">", Greater, 0},
    {">=", GreaterOrEqual, 0},
    {"=", Equal, 0},
    {"~=", NotEqual, 0},
    {"==", Near, 0},
    {"~==", NotNear, 0},
    {"", nullptr, 0},
};

constexpr CaOperatorEntry CaFunctionTable[] = {
    {"v", MakeVector, 0},
    {"p", MakePoint, 0},
    {"m", MakeMatrix, 0},
    {"u", FirstAxisOf, 0},
    {"n", ThirdAxisOf, 0},
    {"t", TranslationOf, 0},
    {"q", MakeQuaternion, 0},
    {"r", MakeRotation, 0},
    {"s", MakeScale, 0},
    {"w", MeasureOf, 0},
    {"x", XOf, 0},
    {"y", YOf, 0},
    {"z", ZOf, 0},
    {"a", AngleOf, 0},
    {"sin", Sine, 0},
    {"cos", Cosine, 0},
    {"tan", Tangent, 0},
    {"asin", ArcSine, 0},
    {"acos", ArcCosine, 0},
    {"atan", ArcTangent, 0},
    {"atan2", ArcTangent2, 0},
    {"ln", Logarithm, 0},
    {"exp", Exponential, 0},
    {"sqrt", SquareRoot, 0},
    {"write", WriteVariablesFile, 0},
    {"read", ReadProgramFile, 0},
    {"build", BuildNumber, 0},
    {"", nullptr, 0},
};

constexpr CaSpecifierEntry CaSpecifierTable[] = {
    {"v", ReadVector},   {"p", ReadPoint}, {"m", ReadMatrix}, {"q", ReadQuaternion},
    {"r", ReadRotation}, {"s", ReadScale}, {"", nullptr},
};

namespace {

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
