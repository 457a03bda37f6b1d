#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "calc/object.h"

struct CaInterpreter;

/// The rules of operators and functions, as tables that the compiler checks.
///
/// A binary operator has a row for each pair of types, top first; the first row that fits wins.
/// A function of the top operand has a row for each type that it takes.

/// Stands for every type, one outside the known ones included.
inline constexpr auto AnyType = static_cast<CaType>(-1);

/// Stand for operands in the forms of operators that look at more than a type.
inline constexpr auto AnyVariable = static_cast<CaType>(-2);  // an entry that is a variable
inline constexpr auto AllEntries = static_cast<CaType>(-3);   // the whole stack, be it empty

/// Makes the result of A (beneath) and B (top). A value of type nothing says that there is none:
/// the operator then fails silently.
using CaCombine = CaValue (*)(const CaValue& a, const CaValue& b);

/// What becomes of a pair: a result, or a failure with or without a report.
struct CaOutcome {
  constexpr CaOutcome() = default;
  constexpr CaOutcome(CaCombine make) : combine(make), makes(true) {}  // NOLINT: rows name it alone
  constexpr explicit CaOutcome(bool report) : reports(report) {}

  CaCombine combine = nullptr;
  bool makes = false;  // has a `combine`; the compiler cannot ask that of every function
  bool reports = false;
};

inline constexpr CaOutcome Report(true);
inline constexpr CaOutcome Silent(false);

struct CaRule {
  CaType top;
  CaType beneath;
  CaOutcome then;
  CaType gives = TypeNothing;  // the type of the result

  constexpr bool Fits(std::int32_t topType, std::int32_t beneathType) const {
    return (top == AnyType || top == topType) && (beneath == AnyType || beneath == beneathType);
  }
};

inline constexpr std::int32_t TypeCount = TypeScale + 1;

/// Whether every pair of types has a rule, every rule is the first for some pair, and exactly those
/// that make something say what.
constexpr bool CoversEveryPairOnce(std::span<const CaRule> rules) {
  std::array<bool, 64> used{};
  for (std::int32_t pair = 0; pair < TypeCount * TypeCount; ++pair) {
    std::size_t row = 0;
    while (row < rules.size() && !rules[row].Fits(pair / TypeCount, pair % TypeCount)) ++row;
    if (row == rules.size()) return false;
    used[row] = true;
  }
  for (std::size_t row = 0; row < rules.size(); ++row) {
    if (!used[row]) return false;
    if (rules[row].then.makes != (rules[row].gives != TypeNothing)) return false;
  }
  return true;
}

/// The rules worked out for every pair, so that an operator finds its outcome at once.
class CaRuleGrid {
 public:
  /// The table of `rules` must outlive the grid.
  explicit constexpr CaRuleGrid(std::span<const CaRule> rules) : rules_(rules) {
    for (std::int32_t pair = 0; pair < TypeCount * TypeCount; ++pair) {
      std::size_t row = 0;
      while (!rules[row].Fits(pair / TypeCount, pair % TypeCount)) ++row;
      outcomes_[static_cast<std::size_t>(pair)] = rules[row].then;
    }
  }

  /// A type outside the known ones counts as nothing, which no rule names.
  const CaOutcome& For(std::int32_t top, std::int32_t beneath) const {
    return outcomes_[RowOf(top) * TypeCount + RowOf(beneath)];
  }

  std::span<const CaRule> Rules() const { return rules_; }

 private:
  static std::size_t RowOf(std::int32_t type) {
    const auto row = static_cast<std::uint32_t>(type);
    return row < TypeCount ? row : std::size_t{TypeNothing};
  }

  std::span<const CaRule> rules_;
  std::array<CaOutcome, TypeCount * TypeCount> outcomes_;
};

/// The values of the operands by position: [0] is the top.
using CaOperands = std::span<const CaValue* const>;

/// One form of what a function of the top operand takes and gives.
struct CaTopRule {
  CaType top;
  int operands;    // consumed, the top included
  CaType further;  // the type of the operands beneath the top; another one is reported
  CaType gives;    // the type of the result; TypeNothing where there is none
  CaValue (*make)(CaOperands s) = nullptr;  // null: nothing changes
};

/// The most operands that a rule takes.
inline constexpr std::size_t MostOperands = 12;

/// A row that replaces the top alone.
constexpr CaTopRule Replaced(CaType top, CaType gives, CaValue (*make)(CaOperands s)) {
  return {top, 1, AnyType, gives, make};
}

/// A row that leaves the top as it is.
constexpr CaTopRule Kept(CaType top) { return {top, 1, AnyType, top}; }

// The one form of an operator that has no table of rules.

inline constexpr CaTopRule TakesNothing[] = {{TypeNothing, 0, AnyType, TypeNothing}};
inline constexpr CaTopRule TakesAll[] = {{AllEntries, 0, AnyType, TypeNothing}};
inline constexpr CaTopRule TakesString[] = {{TypeString, 1, AnyType, TypeNothing}};
inline constexpr CaTopRule TakesVariable[] = {{AnyVariable, 2, AnyType, TypeNothing}};
template <int Count>
inline constexpr CaTopRule TakesAny[] = {{AnyType, Count, AnyType, TypeNothing}};
template <int Count>
inline constexpr CaTopRule TakesReals[] = {{TypeReal, Count, TypeReal, TypeNothing}};
template <CaType Type>
inline constexpr CaTopRule Gives[] = {{TypeNothing, 0, AnyType, Type}};

/// Whether no type has two rows and no row takes too many operands.
constexpr bool NamesEachTypeOnce(std::span<const CaTopRule> rules) {
  for (std::size_t i = 0; i < rules.size(); ++i) {
    if (rules[i].operands > static_cast<int>(MostOperands)) return false;
    for (std::size_t k = 0; k < i; ++k) {
      if (rules[k].top == rules[i].top) return false;
    }
  }
  return true;
}

struct CaOperatorEntry;

/// Applies the rules for pairs of `entry` to the two top entries, of which there must be two.
/// Returns 1, or 0 with the stack as it was.
int ApplyRules(CaInterpreter& interpreter, const CaRuleGrid& rules, const CaOperatorEntry& entry);

/// Applies the form of `entry` for the type of the top, of which there must be one; without a
/// form, or with too few operands, it fails silently. Returns 1, or 0 with the stack as it was.
int ApplyForms(CaInterpreter& interpreter, const CaOperatorEntry& entry);
