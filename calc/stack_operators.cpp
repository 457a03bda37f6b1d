#include "calc/stack_operators.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

#include "calc/angles.h"
#include "calc/interpreter.h"
#include "calc/rules.h"

namespace {

CaValue Radians(CaOperands s) { return CaValue(s[0]->real * DegreesToRadians); }
CaValue Degrees(CaOperands s) { return CaValue(s[0]->real * RadiansToDegrees); }

CaValue AbsoluteReal(CaOperands s) { return CaValue(std::fabs(s[0]->real)); }
CaValue UnitVector(CaOperands s) {
  CyVector vector = s[0]->vector;
  return CaValue(TypeVector, vector.Normalize());
}
CaValue UnitQuaternion(CaOperands s) {
  CyQuaternion quaternion = s[0]->quaternion;
  return CaValue(quaternion.Normalize());
}

/// Wraps for the most negative integer.
CaValue NegatedInteger(CaOperands s) {
  return CaValue(static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(s[0]->integer)));
}
CaValue NegatedReal(CaOperands s) { return CaValue(-s[0]->real); }
CaValue NegatedVector(CaOperands s) { return CaValue(TypeVector, -s[0]->vector); }
CaValue InverseMatrix(CaOperands s) { return CaValue(s[0]->matrix.Inverse()); }
CaValue InverseQuaternion(CaOperands s) { return CaValue(s[0]->quaternion.Inverse()); }
CaValue NegatedRotation(CaOperands s) {
  return CaValue(CyRotation(s[0]->rotation.axis, -s[0]->rotation.angle));
}

constexpr CaTopRule ToRadiansRules[] = {
    Replaced(TypeReal, Radians),
};

constexpr CaTopRule ToDegreesRules[] = {
    Replaced(TypeReal, Degrees),
};

constexpr CaTopRule MagnitudeRules[] = {
    Replaced(TypeReal, AbsoluteReal),
    Replaced(TypeVector, UnitVector),
    Replaced(TypeQuaternion, UnitQuaternion),
};

// Deliberate: points and scales might be expected to be negated like vectors; they fail. Held by
// the type rules of "~".
constexpr CaTopRule NegateRules[] = {
    Replaced(TypeInteger, NegatedInteger),       Replaced(TypeReal, NegatedReal),
    Replaced(TypeVector, NegatedVector),         Replaced(TypeMatrix, InverseMatrix),
    Replaced(TypeQuaternion, InverseQuaternion), Replaced(TypeRotation, NegatedRotation),
};

static_assert(NamesEachTypeOnce(MagnitudeRules));
static_assert(NamesEachTypeOnce(NegateRules));

/// The first whole number that is no position.
constexpr double EndOfPositions = 2147483648.0;

}  // namespace

// Deliberate: on too short a stack "#", "?", "\", "'" and "~" succeed without effect where one
// would expect them to fail as "''", ":", ">>", "<<", "$" and "|" do. Held by the rows of the
// operator tests on short stacks.

int PrintTop(CaInterpreter& interpreter) {
  ShowTop(interpreter);
  interpreter.PopValue();
  return 1;
}

int PrintAllAndClear(CaInterpreter& interpreter) {
  ShowAll(interpreter);
  return DropAll(interpreter);
}

int ShowTop(CaInterpreter& interpreter) {
  interpreter.show(interpreter.output, *interpreter.Peek(0)->Value());
  return 1;
}

int ShowAll(CaInterpreter& interpreter) {
  const CaListNode* node = interpreter.stack.tail;
  for (; node != nullptr; node = node->previous) {
    interpreter.show(interpreter.output, *node->payload->Value());
  }
  return 1;
}

int Drop(CaInterpreter& interpreter) {
  interpreter.PopValue();
  return 1;
}

int DropAll(CaInterpreter& interpreter) {
  interpreter.PopValues(interpreter.Depth());
  return 1;
}

int Duplicate(CaInterpreter& interpreter) {
  if (interpreter.Depth() > 0) interpreter.PushCopy(*interpreter.Peek(0)->Value());
  return 1;
}

int Pick(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 1) return 0;
  const CaValue& top = *interpreter.Peek(0)->Value();
  const bool isReal = top.type == TypeReal;
  const double index = top.real;
  // Deliberate: a failure would be expected to leave the stack alone; the index is gone whatever
  // follows. Held by the rows of "''" in the operator tests.
  interpreter.PopValue();
  // Also false for a not-a-number, which no position fits.
  if (!isReal || !(index < EndOfPositions)) return 0;
  // Deliberate: every negative position is the top, and nothing at all on an empty stack.
  const int position = index > -1.0 ? static_cast<int>(index) : -1;
  if (interpreter.Depth() <= position) return 0;
  interpreter.PushCopy(*interpreter.Peek(position)->Value());
  return 1;
}

int Swap(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  const CaValue top = *interpreter.Peek(0)->Value();
  const CaValue beneath = *interpreter.Peek(1)->Value();
  interpreter.PopValues(2);
  interpreter.PushCopy(top);
  interpreter.PushCopy(beneath);
  return 1;
}

int Assign(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 2) return 0;
  const CaListNode* top = interpreter.stack.head;
  if (top->payload->Kind() != KindVariable) return 0;
  // The variable on the stack is itself what the table gets.
  const CaValue& value = *top->next->payload->Value();
  std::unique_ptr<CaVariable> variable(static_cast<CaVariable*>(interpreter.stack.PopFront()));
  variable->value = value;
  interpreter.DefineOwned(std::move(variable));
  interpreter.PopValue();
  return 1;
}

int ToRadians(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, ToRadiansRules, ">>");
}

int ToDegrees(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, ToDegreesRules, "<<");
}

int Magnitude(CaInterpreter& interpreter) {
  return ApplyTopRules(interpreter, MagnitudeRules, "$");
}

int Negate(CaInterpreter& interpreter) {
  if (interpreter.Depth() < 1) return 1;
  return ApplyTopRules(interpreter, NegateRules, "~");
}
