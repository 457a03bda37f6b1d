#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <tuple>

#include "calc/dispatch.h"
#include "calc/interpreter.h"

/// Conditions on reals and the blocks that they skip. A condition pops its operands and pushes
/// nothing; a false one skips the next operator or block. With a not-a-number among the operands
/// all are true but "=". Blocks take nothing and never fail.

namespace operators {

/// The reals on top, the deepest first. False when there are fewer, or when one is no real.
template <std::size_t N>
bool TakeReals(const CaInterpreter& interpreter, std::array<double, N>& reals) {
  if (interpreter.Depth() < static_cast<int>(N)) return false;
  const CaListNode* node = interpreter.stack.head;
  for (std::size_t i = N; i-- > 0; node = node->next) {
    const CaValue& value = *node->payload->Value();
    if (value.type != TypeReal) return false;
    reals[i] = value.real;
  }
  return true;
}

/// The routine of a condition on N reals.
template <std::size_t N, auto Holds>
int Compare(CaInterpreter& interpreter) {
  std::array<double, N> operands{};
  if (!TakeReals(interpreter, operands)) return 0;
  if (!std::apply(Holds, operands)) ++interpreter.skipLevel;
  interpreter.PopValues(static_cast<int>(N));
  return 1;
}

// Deliberate: a not-a-number would be expected to make a condition false. Here it makes all of them
// true but "=", because each but that one asks whether the opposite fails. Held by
// SkipTheNextOperatorWhenFalse in programs_test.cpp.

inline bool IsLess(double a, double b) { return !(a >= b); }
inline bool IsLessOrEqual(double a, double b) { return !(a > b); }
inline bool IsGreater(double a, double b) { return !(a <= b); }
inline bool IsGreaterOrEqual(double a, double b) { return !(a < b); }
inline bool IsEqual(double a, double b) { return a == b; }
inline bool IsNotEqual(double a, double b) { return a != b; }
inline bool IsNear(double a, double b, double e) { return !(std::fabs(a - b) > e); }
inline bool IsNotNear(double a, double b, double e) { return !(std::fabs(a - b) <= e); }

inline constexpr CaOperatorEntry Less = {
    .name = "<",
    .function = Compare<2, IsLess>,
    .forms = TakesReals<2>,
    .help = {"go on when less, else skip the next operator or block", "1 2 < { \"less\" # }",
             " \"less\"\n"},
};

inline constexpr CaOperatorEntry LessOrEqual = {
    .name = "<=",
    .function = Compare<2, IsLessOrEqual>,
    .forms = TakesReals<2>,
    .help = {"go on when less or equal, else skip the next operator or block",
             "2 2 <= { \"at most\" # }", " \"at most\"\n"},
};

inline constexpr CaOperatorEntry Greater = {
    .name = ">",
    .function = Compare<2, IsGreater>,
    .forms = TakesReals<2>,
    .help = {"go on when greater, else skip the next operator or block", "2 1 > { \"greater\" # }",
             " \"greater\"\n"},
};

inline constexpr CaOperatorEntry GreaterOrEqual = {
    .name = ">=",
    .function = Compare<2, IsGreaterOrEqual>,
    .forms = TakesReals<2>,
    .help = {"go on when greater or equal, else skip the next operator or block",
             "2 2 >= { \"at least\" # }", " \"at least\"\n"},
};

inline constexpr CaOperatorEntry Equal = {
    .name = "=",
    .function = Compare<2, IsEqual>,
    .forms = TakesReals<2>,
    .help = {"go on when exactly equal, else skip the next operator or block",
             "0.1 0.2 + 0.3 = { \"no\" # } \"after\" #", " \"after\"\n"},
};

inline constexpr CaOperatorEntry NotEqual = {
    .name = "~=",
    .function = Compare<2, IsNotEqual>,
    .forms = TakesReals<2>,
    .help = {"go on when not equal, else skip the next operator or block",
             "1 2 ~= { \"different\" # }", " \"different\"\n"},
};

inline constexpr CaOperatorEntry Near = {
    .name = "==",
    .function = Compare<3, IsNear>,
    .forms = TakesReals<3>,
    .help = {"go on when equal within the tolerance on top, else skip the next operator or block",
             "0.1 0.2 + 0.3 1e-9 == { \"equal\" # }", " \"equal\"\n"},
};

inline constexpr CaOperatorEntry NotNear = {
    .name = "~==",
    .function = Compare<3, IsNotNear>,
    .forms = TakesReals<3>,
    .help =
        {"go on when not equal within the tolerance on top, else skip the next operator or block",
         "1 2 0.5 ~== { \"apart\" # }", " \"apart\"\n"},
};

// The limits of blocks run while tokens are skipped, too, and matter only then.

inline int RunOpenBlock(CaInterpreter& interpreter) {
  constexpr auto Deepest = std::numeric_limits<std::int32_t>::max();
  if (interpreter.skipLevel >= 0 && interpreter.skipLevel < Deepest) ++interpreter.skipLevel;
  return 1;
}

inline int RunCloseBlock(CaInterpreter& interpreter) {
  if (interpreter.skipLevel < 1) return 1;
  if (--interpreter.skipLevel == 0) interpreter.skipLevel = -1;
  return 1;
}

inline int RunCloseAllBlocks(CaInterpreter& interpreter) {
  interpreter.skipLevel = -1;
  return 1;
}

inline constexpr CaOperatorEntry OpenBlock = {
    .name = "{",
    .function = RunOpenBlock,
    .alwaysRun = 1,
    .forms = TakesNothing,
    .help = {"begin a block, which a false condition skips whole", "2 1 < { \"no\" # } \"after\" #",
             " \"after\"\n"},
};

inline constexpr CaOperatorEntry CloseBlock = {
    .name = "}",
    .function = RunCloseBlock,
    .alwaysRun = 1,
    .forms = TakesNothing,
    .help = {"end a block", "1 2 < { \"yes\" # } \"after\" #", " \"yes\"\n \"after\"\n"},
};

inline constexpr CaOperatorEntry CloseAllBlocks = {
    .name = "}}",
    .function = RunCloseAllBlocks,
    .alwaysRun = 1,
    .forms = TakesNothing,
    .help = {"end all open blocks", "2 1 < { { \"no\" # }} \"after\" #", " \"after\"\n"},
};

}  // namespace operators
