#include "tools/kelcalc/reference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "calc/dispatch.h"
#include "calc/explain/alternatives.h"
#include "calc/interpreter.h"
#include "tests/calc/calc_harness.h"
#include "tests/folder.h"

namespace {

/// All operators and functions.
std::vector<const CaOperatorEntry*> Entries() {
  std::vector<const CaOperatorEntry*> entries;
  for (const CaOperatorEntry* table : {CaOperatorTable, CaFunctionTable}) {
    for (; *table->name != '\0'; ++table) entries.push_back(table);
  }
  return entries;
}

TEST(Help, ExamplesPrintWhatIsPromised) {
  const auto before = std::filesystem::current_path();
  const Folder folder;
  std::filesystem::current_path(folder.Root());  // the examples of files make one
  for (const CaOperatorEntry* entry : Entries()) {
    const CaHelp& help = entry->help;
    const Written written = Calculator().Run(std::string(help.example) + "\n");
    EXPECT_EQ(written.output, help.output) << help.example;
    EXPECT_EQ(written.errors, "") << help.example;
    EXPECT_NE(std::string(help.example).find(SpellingOf(*entry)), std::string::npos) << entry->name;
  }
  std::filesystem::current_path(before);
}

bool Takes(const std::vector<kelcalc::Alternative>& alternatives, int top, int beneath) {
  return std::ranges::any_of(alternatives, [&](const kelcalc::Alternative& one) {
    return std::ranges::all_of(one.operands, [&](const CaType& operand) {
      const int type = &operand == &one.operands.back() ? top : beneath;
      return operand == type || operand == AnyType || operand == AllEntries;
    });
  });
}

/// For the operators that tell of operands without a rule, the types on top with which they do;
/// the others, and other types, fail silently.
const std::map<std::string_view, std::vector<CaType>> Reporting = {
    {"+", {TypeInteger, TypeReal}},
    {"-", {TypeInteger, TypeReal, TypeVector, TypePoint}},
    {"*",
     {TypeInteger, TypeReal, TypeVector, TypePoint, TypeMatrix, TypeQuaternion, TypeRotation,
      TypeScale}},
    {"%", {TypeInteger, TypeVector, TypeQuaternion}},
    {"/", {TypeInteger, TypeReal}},
};

/// Whether `entry`, which failed, had to tell of it.
bool Reports(const CaOperatorEntry& entry, int top) {
  const auto found = Reporting.find(entry.name);
  return found != Reporting.end() && std::ranges::find(found->second, top) != found->second.end();
}

/// Runs `entry` on a deep stack of values, `top` on top.
void ExpectToRunAsTold(const CaOperatorEntry& entry, int top, int beneath, std::FILE* output) {
  CaInterpreter interpreter;
  interpreter.errors = std::tmpfile();
  interpreter.output = output;
  CaValue value("text");
  value.integer = 1;
  value.real = 1.0;
  for (std::size_t i = 0; i <= MostOperands; ++i) {
    value.type = i == MostOperands ? top : beneath;
    interpreter.PushCopy(value);
  }
  const auto alternatives = kelcalc::AlternativesOf(entry);
  const int done = entry.function(interpreter);
  EXPECT_EQ(done != 0, Takes(alternatives, top, beneath)) << entry.name << top << beneath;
  if (entry.pairs != nullptr) {
    EXPECT_EQ(std::ftell(interpreter.errors) > 0, done == 0 && Reports(entry, top))
        << entry.name << top << beneath;
    EXPECT_EQ(interpreter.Depth() > static_cast<int>(MostOperands), done == 0) << entry.name;
  }
  const int result = interpreter.Peek(0)->Value()->type;
  EXPECT_TRUE(done == 0 || std::ranges::any_of(alternatives,
                                               [&](const auto& one) {
                                                 return one.gives == TypeNothing ||
                                                        one.gives == result;
                                               }))
      << entry.name << top << beneath;
  std::fclose(interpreter.errors);
}

// What an entry tells of an operator is what its routine does, whichever way it does it.
TEST(Alternatives, AreWhatRuns) {
  for (const CaOperatorEntry* entry : Entries()) {
    if (SpellingOf(*entry) == ";write" || SpellingOf(*entry) == ";read") continue;
    std::FILE* output = std::tmpfile();
    for (int pair = 0; pair < TypeCount * TypeCount; ++pair) {
      ExpectToRunAsTold(*entry, pair / TypeCount, pair % TypeCount, output);
    }
    EXPECT_EQ(std::ftell(output) > 0, entry->prints) << entry->name;
    std::fclose(output);
    CaInterpreter empty;
    const std::vector<CaType> operands = kelcalc::AlternativesOf(*entry)[0].operands;
    const bool succeeds = operands.empty() || operands[0] == AllEntries ||
                          entry->onShortStack == CaShortStack::Succeeds;
    EXPECT_EQ(entry->function(empty) != 0, succeeds) << entry->name;
  }
}

constexpr const char* Begin = "<!-- reference: begin -->\n";
constexpr const char* End = "<!-- reference: end -->\n";

/// With KEL_UPDATE set in the environment it brings the page up to date instead.
TEST(Reference, OfTheLanguagePageIsMadeFromTheTables) {
  std::ostringstream content;
  content << std::ifstream(KEL_LANGUAGE_PAGE).rdbuf();
  std::string page = content.str();
  const std::size_t begin = page.find(Begin);
  const std::size_t end = page.find(End);
  ASSERT_TRUE(begin != std::string::npos && end != std::string::npos && begin < end);
  const std::size_t first = begin + std::string(Begin).size();
  const std::string expected = std::string("\n").append(kelcalc::ReferenceMarkdown()).append("\n");
  if (std::getenv("KEL_UPDATE") != nullptr) {
    std::ofstream(KEL_LANGUAGE_PAGE) << page.replace(first, end - first, expected);
    return;
  }
  EXPECT_EQ(page.substr(first, end - first), expected)
      << "run this test with KEL_UPDATE=1 to bring the page up to date";
}

}  // namespace
