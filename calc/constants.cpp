#include "calc/constants.h"

#include <array>
#include <cstddef>

#include "calc/interpreter.h"
#include "calc/numbers.h"
#include "calc/object.h"
#include "calc/reader.h"
#include "calc/reports.h"

namespace {

/// Reads "(", the numbers and ")". All numbers are tried even after one has failed.
template <std::size_t N>
int ReadNumbers(CaInterpreter& interpreter, const char* name, std::array<double, N>& numbers) {
  if (ReadChar(interpreter) != '(') return ReportBadCompound(interpreter, name);
  std::size_t converted = 0;
  for (double& number : numbers) {
    SkipBlanks(interpreter);
    if (ReadSigned(*interpreter.input, number)) ++converted;
  }
  if (converted != N) return ReportBadCompound(interpreter, name);
  SkipBlanks(interpreter);
  if (ReadChar(interpreter) == ')') return 1;
  PushBackChar(interpreter);
  return ReportBadCompound(interpreter, name);
}

int ReadTriple(CaInterpreter& interpreter, const char* name, CaType tag, CaValue*& value) {
  std::array<double, 3> n{};
  if (ReadNumbers(interpreter, name, n) == 0) return 0;
  value = new CaValue(tag, CyVector(n[0], n[1], n[2]));
  return 1;
}

}  // namespace

int ReadVector(CaInterpreter& interpreter, CaValue*& value) {
  return ReadTriple(interpreter, "v", TypeVector, value);
}

int ReadPoint(CaInterpreter& interpreter, CaValue*& value) {
  return ReadTriple(interpreter, "p", TypePoint, value);
}

int ReadMatrix(CaInterpreter& interpreter, CaValue*& value) {
  std::array<double, 12> n{};
  if (ReadNumbers(interpreter, "m", n) == 0) return 0;
  CyMatrix matrix;
  matrix.SetCol0(n[0], n[4], n[8]);
  matrix.SetCol1(n[1], n[5], n[9]);
  matrix.SetCol2(n[2], n[6], n[10]);
  matrix.SetTrans(n[3], n[7], n[11]);
  value = new CaValue(matrix);
  return 1;
}

int ReadQuaternion(CaInterpreter& interpreter, CaValue*& value) {
  std::array<double, 4> n{};
  if (ReadNumbers(interpreter, "q", n) == 0) return 0;
  value = new CaValue(CyQuaternion(n[0], CyVector(n[1], n[2], n[3])));
  return 1;
}

int ReadRotation(CaInterpreter& interpreter, CaValue*& value) {
  std::array<double, 4> n{};
  if (ReadNumbers(interpreter, "r", n) == 0) return 0;
  value = new CaValue(CyRotation(CyVector(n[0], n[1], n[2]), n[3]));
  return 1;
}

int ReadScale(CaInterpreter& interpreter, CaValue*& value) {
  return ReadTriple(interpreter, "s", TypeScale, value);
}
