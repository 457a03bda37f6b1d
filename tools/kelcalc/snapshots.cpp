#include "tools/kelcalc/snapshots.h"

#include "calc/interpreter.h"
#include "calc/object.h"

namespace kelcalc {
namespace {

std::size_t ObjectsIn(const CaInterpreter& interpreter) {
  return static_cast<std::size_t>(interpreter.Depth()) +
         static_cast<std::size_t>(interpreter.VariableCount());
}

/// Gives `to`, which is empty, the stack, the variables and the skipping of `from`.
void Copy(const CaInterpreter& from, CaInterpreter& to) {
  for (const CaListNode* node = from.stack.tail; node != nullptr; node = node->previous) {
    to.PushCopy(*node->payload);
  }
  for (const CaListNode* node = from.variables.tail; node != nullptr; node = node->previous) {
    to.DefineVariable(*static_cast<const CaVariable*>(node->payload));
  }
  to.skipLevel = from.skipLevel;
}

}  // namespace

Snapshots::Snapshots() = default;
Snapshots::~Snapshots() = default;

std::size_t Snapshots::Objects() const {
  std::size_t objects = 0;
  for (const auto& step : steps) objects += ObjectsIn(*step);
  return objects;
}

void Snapshots::Take(const CaInterpreter& interpreter) {
  const std::size_t wanted = ObjectsIn(interpreter);
  while (!steps.empty() && (steps.size() == MostSteps || Objects() + wanted > MostObjects)) {
    steps.pop_front();
  }
  if (wanted > MostObjects) return;
  steps.push_back(std::make_unique<CaInterpreter>());
  Copy(interpreter, *steps.back());
}

bool Snapshots::Restore(CaInterpreter& interpreter) {
  if (steps.empty()) return false;
  interpreter.PopValues(interpreter.Depth());
  interpreter.DestroyVariables();
  Copy(*steps.back(), interpreter);
  steps.pop_back();
  return true;
}

}  // namespace kelcalc
