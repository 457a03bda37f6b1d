#include "tools/kelcalc/reference.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "calc/dispatch.h"
#include "calc/help.h"
#include "calc/interpreter.h"
#include "calc/run.h"
#include "tests/folder.h"
#include "tools/kelcalc/operand_types.h"

namespace {

/// What `program` prints; `errors` gets its messages.
std::string OutputOf(const std::string& program, std::string& errors) {
  CaInterpreter interpreter;
  interpreter.output = std::tmpfile();
  interpreter.errors = std::tmpfile();
  RunText(interpreter, program + "\n", "test");
  std::string texts[2];
  for (std::FILE* file : {interpreter.output, interpreter.errors}) {
    std::string& text = texts[file == interpreter.errors];
    std::rewind(file);
    for (int c = std::getc(file); c != EOF; c = std::getc(file)) text += static_cast<char>(c);
    std::fclose(file);
  }
  errors = texts[1];
  return texts[0];
}

TEST(Help, StandsInTheOrderOfTheDispatchTables) {
  const CaHelpEntry* help = CaHelpTable;
  for (const CaOperatorEntry* entry = CaOperatorTable; *entry->name != '\0'; ++entry, ++help) {
    EXPECT_STREQ(help->name, entry->name);
  }
  for (const CaOperatorEntry* entry = CaFunctionTable; *entry->name != '\0'; ++entry, ++help) {
    EXPECT_EQ(help->name, std::string(";").append(entry->name));
  }
  EXPECT_STREQ(help->name, "");
}

TEST(Help, ExamplesPrintWhatIsPromised) {
  const auto before = std::filesystem::current_path();
  const Folder folder;
  std::filesystem::current_path(folder.Root());  // the examples of files make one
  for (const CaHelpEntry* help = CaHelpTable; *help->name != '\0'; ++help) {
    std::string errors;
    EXPECT_EQ(OutputOf(help->example, errors), help->output) << help->example;
    EXPECT_EQ(errors, "") << help->example;
    EXPECT_NE(std::string(help->example).find(help->name), std::string::npos) << help->name;
  }
  std::filesystem::current_path(before);
}

/// The combinations of `name`, each followed by ";".
std::string Combinations(const char* name) {
  std::string text;
  for (const auto& combination : kelcalc::TypesOf(*FindHelp(name)).combinations) {
    text += kelcalc::CombinationText(combination, name).append(" ");
    text += combination.result;
    text += "; ";
  }
  return text;
}

TEST(OperandTypes, AreThoseOfTheRules) {
  EXPECT_EQ(Combinations("/"),
            "integer/integer integer; real/real real; vector/real vector; "
            "quaternion/real quaternion; rotation/real quaternion; scale/real scale; ");
  EXPECT_EQ(Combinations(";m"),
            "12 reals matrix; 3 vectors, point matrix; matrix unchanged; quaternion matrix; "
            "rotation matrix; scale matrix; ");
  EXPECT_EQ(Combinations(";atan2"), "real, real real; ");
  EXPECT_EQ(Combinations(";build"), "nothing real; ");
  EXPECT_EQ(Combinations(":"), "any, variable ; ");
}

/// Where no rules can be asked, what users are told must be what runs.
TEST(OperandTypes, ThatAreOnlyToldHold) {
  for (const CaHelpEntry* help = CaHelpTable; *help->name != '\0'; ++help) {
    if (std::string(help->operands).find("real") == std::string::npos) continue;
    std::string errors;
    OutputOf(std::string("1 1 0 ").append(help->name), errors);
    EXPECT_EQ(errors, "") << help->name;
    OutputOf(std::string("1 1 \"a\" ").append(help->name), errors);
    EXPECT_EQ(errors, "\a \n") << help->name;
  }
}

TEST(Explanation, FindsFunctionsWithAndWithoutTheirSign) {
  EXPECT_EQ(kelcalc::ExplanationText("sqrt"), kelcalc::ExplanationText(";sqrt"));
  EXPECT_EQ(kelcalc::ExplanationText(";sqrt"),
            ";sqrt  square root\n\n  real  ->  real\n\nExample:  2 ;sqrt #\n 1.414214\n");
  EXPECT_EQ(kelcalc::ExplanationText("nope"), "");
  EXPECT_EQ(kelcalc::ExplanationText(""), "");
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
