#include "tools/kelcalc/help_topics.h"

#include <algorithm>
#include <cstddef>

#include "calc/dispatch.h"
#include "calc/explain/alternatives.h"
#include "calc/object.h"
#include "tools/kelcalc/number_style.h"
#include "tools/kelcalc/reference.h"

namespace kelcalc {
namespace {

struct TypeEntry {
  CaType type;
  const char* written;
  const char* told;
};

// clang-format off
constexpr TypeEntry Types[] = {
    {TypeReal, "2.5  -1e3",
     "A number, the only kind that a program can write. Angles are degrees.\n"},
    {TypeString, "\"text\"",
     "A text of up to 1024 characters, which may span lines. A backslash takes the next\n"
     "character as it is.\n"},
    {TypeVector, "v(x, y, z)", "A direction or a displacement: no translation touches it.\n"},
    {TypePoint, "p(x, y, z)", "A place. The difference of two points is a vector.\n"},
    {TypeMatrix, "m(12 numbers, row by row)",
     "An affine transform of three rows and four columns; the fourth is the translation.\n"},
    {TypeQuaternion, "q(w, x, y, z)", "Scalar part first. It need not be of unit length.\n"},
    {TypeRotation, "r(x, y, z, angle)",
     "A turn about an axis, which may have any length, by degrees, right-handed.\n"},
    {TypeScale, "s(x, y, z)", "Three factors, one along each axis.\n"},
    {TypeInteger, "not at all",
     "Every number of a program is a real. Only programs that embed the calculator have\n"
     "integers.\n"},
    {TypeNothing, "a name without a value", "Prints nothing.\n"},
};

struct Topic {
  const char* name;
  const char* text;
};

constexpr Topic Topics[] = {
    {"stack",
     "Values go onto the stack; an operator takes what it needs from the top and leaves its\n"
     "result there: 1 2 + leaves 3. # prints the top and drops it, ? keeps it, ## prints all.\n"
     "' copies the top, | swaps the two on top, \\ drops the top, \\\\ drops all; n '' copies the\n"
     "value n places beneath the top.\n"},
    {"variables",
     "5 width : defines width as 5. A name pushes the value that it has at that moment; a name\n"
     "without a value pushes nothing. :vars shows all variables.\n"},
    {"types",
     "real 2.5, string \"text\", vector v(1,2,3), point p(1,2,3), scale s(1,1,2),\n"
     "rotation r(0,0,1,90), quaternion q(1,0,0,0), matrix m(12 numbers).\n"
     ";v ;p ;m ;q ;r ;s make one of them from numbers or from another value.\n"},
    {"conditions",
     "1 2 < { \"less\" # } runs the block when 1 is less than 2. When a condition is false, the\n"
     "next operator or block is skipped, and the values before it are lost.\n"
     "<  <=  >  >=  =  ~= compare two numbers, == and ~== within the tolerance on top.\n"},
    {"files",
     "\"name\" ;write writes the variables to name.3dc, with six decimals; \"name\" ;read runs it.\n"
     ":save and :load keep every digit, and the stack as well.\n"},
    {"programs",
     "Blanks and commas separate words. [ A comment stands in brackets, [ which nest ]. ]\n"
     "Operators need a blank between them: #? is one word. A number may touch the name behind it.\n"},
};
// clang-format on

bool Mentions(const CaOperatorEntry& entry, CaType type, bool asResult) {
  const std::vector<Alternative> alternatives = AlternativesOf(entry);
  return std::any_of(alternatives.begin(), alternatives.end(), [&](const Alternative& one) {
    if (asResult) return one.gives == type && !one.keeps;
    return std::find(one.operands.begin(), one.operands.end(), type) != one.operands.end();
  });
}

/// "Taken by  +  -" with all operators and functions that take or give `type`.
std::string Users(const char* title, CaType type, bool asResult) {
  std::string text;
  for (const CaOperatorEntry* table : {CaOperatorTable, CaFunctionTable}) {
    for (; *table->name != '\0'; ++table) {
      if (Mentions(*table, type, asResult)) text += "  " + SpellingOf(*table);
    }
  }
  return text.empty() ? text : title + text + '\n';
}

std::string TypeText(const TypeEntry& entry) {
  return std::string(TypeName(entry.type)) + "  " + entry.written + "\n\n" + entry.told + '\n' +
         Users("Taken by:", entry.type, false) + Users("Made by: ", entry.type, true);
}

}  // namespace

std::string HelpText(std::string_view name) {
  if (std::string text = ExplanationText(name); !text.empty()) return text;
  for (const TypeEntry& entry : Types) {
    if (name == TypeName(entry.type)) return TypeText(entry);
  }
  for (const Topic& topic : Topics) {
    if (name == topic.name) return topic.text;
  }
  return "";
}

std::vector<std::string> TopicNames() {
  std::vector<std::string> names;
  for (const Topic& topic : Topics) names.emplace_back(topic.name);
  return names;
}

std::vector<std::string> HelpNames() {
  std::vector<std::string> names;
  for (const CaOperatorEntry* table : {CaOperatorTable, CaFunctionTable}) {
    for (; *table->name != '\0'; ++table) names.emplace_back(table->name);
  }
  for (const TypeEntry& entry : Types) names.emplace_back(TypeName(entry.type));
  for (std::string& topic : TopicNames()) names.push_back(std::move(topic));
  return names;
}

}  // namespace kelcalc
