#include "tools/kelcalc/number_style.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include "calc/interpreter.h"
#include "calc/object.h"
#include "geometry/matrix.h"
#include "geometry/vector.h"

namespace kelcalc {
namespace {

std::string NumberText(double number, int digits) {
  char text[MostDigits + 16];
  const auto end =
      std::to_chars(text, text + sizeof text, number, std::chars_format::general, digits);
  return {text, end.ptr};
}

std::string CompoundText(char letter, const std::vector<double>& numbers, int digits) {
  std::string text = {letter, '('};
  const char* separator = "";
  for (const double number : numbers) {
    text += separator + NumberText(number, digits);
    separator = ", ";
  }
  return text + ')';
}

std::string MatrixText(const CyMatrix& matrix, int digits) {
  std::string elements[3][4];
  std::size_t width = 0;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 4; ++column) {
      elements[row][column] = NumberText(matrix.m[row][column], digits);
      width = std::max(width, elements[row][column].size());
    }
  }
  std::string text = "m(";
  for (int row = 0; row < 3; ++row) {
    if (row > 0) text += "\n  ";
    for (int column = 0; column < 4; ++column) {
      const std::string& element = elements[row][column];
      if (column > 0) text += ", ";
      text += std::string(width - element.size(), ' ') + element;
    }
  }
  return text + ')';
}

}  // namespace

std::string ValueText(const CaValue& value, int digits) {
  switch (value.type) {
    case TypeInteger:
      return std::to_string(value.integer);
    case TypeString:
      return std::string("\"") + value.text + '"';
    case TypeReal:
      return NumberText(value.real, digits);
    case TypeMatrix:
      return MatrixText(value.matrix, digits);
    case TypeNothing:
      return "";
    default:
      return CompoundText(CompoundLetter(value.type), NumbersIn(value), digits);
  }
}

char CompoundLetter(int type) {
  constexpr char Letters[] = {0, 0, 0, 0, 'v', 'p', 'm', 'q', 'r', 's'};
  return type >= TypeNothing && type <= TypeScale ? Letters[type] : char{0};
}

namespace {

std::vector<double> ElementsOf(const CyMatrix& matrix) {
  std::vector<double> elements;
  for (const auto& row : matrix.m) elements.insert(elements.end(), std::begin(row), std::end(row));
  return elements;
}

}  // namespace

std::vector<double> NumbersIn(const CaValue& value) {
  switch (value.type) {
    case TypeReal:
      return {value.real};
    case TypeVector:
      return {value.vector.x, value.vector.y, value.vector.z};
    case TypePoint:
      return {value.point.x, value.point.y, value.point.z};
    case TypeScale:
      return {value.scale.x, value.scale.y, value.scale.z};
    case TypeMatrix:
      return ElementsOf(value.matrix);
    case TypeQuaternion: {
      const CyQuaternion& q = value.quaternion;
      return {q.w, q.v.x, q.v.y, q.v.z};
    }
    case TypeRotation: {
      const CyRotation& r = value.rotation;
      return {r.axis.x, r.axis.y, r.axis.z, r.angle};
    }
    default:
      return {};
  }
}

namespace {

int ShownDigits = MostDigits;  // the routine that shows values is a plain function

void ShowValue(std::FILE* output, const CaValue& value) {
  if (value.type != TypeNothing)
    std::fprintf(output, " %s\n", ValueText(value, ShownDigits).c_str());
}

}  // namespace

void SetShownDigits(CaInterpreter& interpreter, int digits) {
  ShownDigits = digits;
  interpreter.show = ShowValue;
}

}  // namespace kelcalc
