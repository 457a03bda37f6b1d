#include "tools/kelcalc/exact_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <vector>

#include "calc/interpreter.h"
#include "calc/object.h"
#include "calc/token_text.h"
#include "tools/kelcalc/number_style.h"

namespace kelcalc {
namespace {

/// Too large a number reads as an infinity.
constexpr const char* Infinity = "1e999";
constexpr const char* NotANumber = "1e999 1e999 -";

std::string NumberText(double number) {
  if (std::isnan(number)) return NotANumber;
  if (std::isinf(number)) return std::string(number < 0 ? "-" : "") + Infinity;
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string JoinedNumbers(const std::vector<double>& numbers, const char* separator) {
  std::string text;
  for (const double number : numbers) {
    if (!text.empty()) text += separator;
    text += NumberText(number);
  }
  return text;
}

/// No constant holds a not-a-number, but the function of the same letter takes one.
std::string CompoundText(char letter, const std::vector<double>& numbers) {
  const bool asConstant =
      std::none_of(numbers.begin(), numbers.end(), [](double x) { return std::isnan(x); });
  if (asConstant) return letter + ('(' + JoinedNumbers(numbers, ", ") + ')');
  return JoinedNumbers(numbers, " ") + " ;" + letter;
}

/// The reader ends a string of the greatest length before its closing quotation mark.
std::string StringText(const char* text) {
  std::string literal = "\"";
  for (const char* at = text; *at != '\0'; ++at) {
    if (*at == '"' || *at == '\\') literal += '\\';
    literal += *at;
  }
  return std::strlen(text) < CaTokenText::LongestString ? literal + '"' : literal;
}

}  // namespace

std::string ExactText(const CaValue& value, const std::string& nameOfNothing) {
  switch (value.type) {
    case TypeInteger:
      return std::to_string(value.integer);
    case TypeString:
      return StringText(value.text);
    case TypeNothing:
      return nameOfNothing;
    case TypeReal:
      return NumberText(value.real);
    default:
      return CompoundText(CompoundLetter(value.type), NumbersIn(value));
  }
}

std::string FreeName(const CaInterpreter& interpreter) {
  std::string name = "nothing";
  while (interpreter.FindVariable(name.c_str())->type != TypeNothing) name += '_';
  return name;
}

namespace {

void KeepExactly(std::FILE* file, const CaInterpreter& interpreter, const CaValue& value) {
  std::fprintf(file, " %s\n", ExactText(value, FreeName(interpreter)).c_str());
}

/// An entry of the stack, in two lines where it is a variable. A swap takes a name away.
std::string EntryText(const CaObject& entry, const std::string& nothing) {
  const std::string value = ExactText(*entry.Value(), nothing);
  const bool isNothing = entry.Value()->type == TypeNothing;
  if (entry.Kind() != KindVariable) return isNothing ? nothing + " ' | \\" : value;
  if (isNothing) return entry.Name();
  return value + ' ' + entry.Name() + " : " + entry.Name();
}

}  // namespace

void WriteExactly(CaInterpreter& interpreter) { interpreter.keep = KeepExactly; }

std::string ExactProgram(const CaInterpreter& interpreter) {
  const std::string nothing = FreeName(interpreter);
  std::string text;
  for (const CaListNode* node = interpreter.stack.tail; node != nullptr; node = node->previous) {
    text += EntryText(*node->payload, nothing) + '\n';
  }
  for (const CaListNode* node = interpreter.variables.tail; node != nullptr;
       node = node->previous) {
    text += ExactText(*node->payload->Value(), nothing) + ' ' + node->payload->Name() + " :\n";
  }
  return text;
}

}  // namespace kelcalc
