#include "calc/block_operators.h"

#include <cstdint>
#include <limits>

#include "calc/interpreter.h"

int OpenBlock(CaInterpreter& interpreter) {
  constexpr auto Deepest = std::numeric_limits<std::int32_t>::max();
  if (interpreter.skipLevel >= 0 && interpreter.skipLevel < Deepest) ++interpreter.skipLevel;
  return 1;
}

int CloseBlock(CaInterpreter& interpreter) {
  if (interpreter.skipLevel < 1) return 1;
  if (--interpreter.skipLevel == 0) interpreter.skipLevel = -1;
  return 1;
}

int CloseAllBlocks(CaInterpreter& interpreter) {
  interpreter.skipLevel = -1;
  return 1;
}
