// Objects, lists and the interpreter's operations, where programs do not reach.

#include "calc/object.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calc/interpreter.h"
#include "calc_harness.h"

namespace {

std::string Printed(const CaObject& object) {
  testing::internal::CaptureStdout();
  object.Print(stdout);
  return testing::internal::GetCapturedStdout();
}

TEST(Values, AssignmentOverAString) {
  CaValue value("old");
  const char* stale = value.text;
  value = CaValue(std::int32_t{7});
  EXPECT_EQ(value.text, stale);  // where the text was; nothing may look there
  const CaValue source("new");
  value = source;
  EXPECT_EQ(Printed(value), " \"new\"\n");
  EXPECT_NE(value.text, source.text);
  EXPECT_EQ(value.integer, 7);
  EXPECT_EQ(CaValue(source).text, source.text);  // copies share it
  CaValue unknown(2.5);
  unknown.type = 12;
  EXPECT_EQ(Printed(unknown), "");
  value = unknown;
  EXPECT_EQ(value.type, TypeNothing);
  EXPECT_EQ(value.integer, 7);
}

TEST(Interpreter, NamesOutliveTheirVariables) {
  CaInterpreter interpreter;
  interpreter.PushOwned(new CaVariable("gone", nullptr));
  const char* name = interpreter.Peek(-1)->Name();
  interpreter.PopValues(-3);
  EXPECT_EQ(interpreter.Depth(), 1);
  interpreter.PopValues(5);
  EXPECT_STREQ(name, "gone");
  EXPECT_EQ(interpreter.Peek(0), &NothingValue);
  EXPECT_EQ(interpreter.Peek(-1), &NothingValue);
}

/// Every change of the list behind the table's back, from the list x y z, which were defined in
/// that order; and what x, y, z and q are then, 0 for nothing.
struct Change {
  void (*make)(CaList& variables);
  std::vector<double> values;
};

void Push(CaList& variables, const char* name, double content) {
  const CaValue value(content);
  variables.PushFront(new CaVariable(name, &value));
}

void Delete(CaObject* variable) { delete static_cast<CaVariable*>(variable); }

const Change Changes[] = {
    {[](CaList& list) { Push(list, "y", 9); }, {1, 9, 3, 0}},
    {[](CaList& list) { Push(list, "q", 9); }, {1, 2, 3, 9}},
    // The node and the number of entries are the same as before.
    {[](CaList& list) { Delete(list.PopFront()), Push(list, "q", 9); }, {1, 2, 0, 9}},
    {[](CaList& list) { Delete(list.PopBack()), Push(list, "q", 9); }, {0, 2, 3, 9}},
    {[](CaList& list) {
       Delete(list.head->next->payload);
       CaListNode* node = list.head->next;
       EXPECT_EQ(CaList().Remove(node) + list.Remove(nullptr), 0);
       EXPECT_EQ(list.Remove(node), 1);
     },
     {1, 0, 3, 0}},
    {[](CaList& list) {
       while (CaObject* variable = list.PopFront()) Delete(variable);
     },
     {0, 0, 0, 0}},
    {[](CaList& list) {
       Delete(list.head->payload);
       list.head->payload = nullptr;
     },
     {1, 2, 0, 0}},
    {[](CaList& list) {
       Delete(list.head->payload);
       const CaValue value(4.0);
       list.head->payload = new CaVariable("q", &value);
     },
     {1, 2, 0, 4}},
};

TEST(Interpreter, FindsVariablesAfterAnyChangeOfTheirList) {
  for (const Change& change : Changes) {
    CaInterpreter interpreter;
    double next = 1;
    for (const char* name : {"x", "y", "z"}) {
      const CaValue value(next++);
      interpreter.DefineVariable(CaVariable(name, &value));
    }
    change.make(interpreter.variables);
    std::vector<double> found;
    for (const char* name : {"x", "y", "z", "q"}) {
      found.push_back(interpreter.FindVariable(name)->real);
    }
    EXPECT_EQ(found, change.values) << &change - Changes;
    int left = interpreter.variables.count;
    while (interpreter.variables.head != nullptr) Delete(interpreter.variables.PopBack()), --left;
    EXPECT_EQ(left, 0) << &change - Changes;
  }
}

// No program makes integers.
struct IntegerCase {
  std::int32_t beneath;  // stays beneath the result of "~"
  std::int32_t top;
  std::string_view name;
  std::optional<std::int32_t> result;  // none where the operator fails
};

constexpr std::int32_t Least = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t Most = std::numeric_limits<std::int32_t>::max();

constexpr IntegerCase IntegerCases[] = {
    {7, 2, "+", 9},    {Most, 1, "+", Least}, {7, 9, "-", -2},        {Least, 1, "-", Most},
    {-7, 3, "*", -21}, {Most, 2, "*", -2},    {65536, 65536, "*", 0}, {-7, 2, "/", -3},
    {7, -2, "/", -3},  {7, 0, "/", {}},       {Least, -1, "/", {}},   {-7, 2, "%", -1},
    {7, -2, "%", 1},   {7, 0, "%", {}},       {Least, -1, "%", {}},   {0, 0, "~", 0},
    {0, 7, "~", -7},   {0, -7, "~", 7},       {0, Most, "~", -Most},  {0, Least, "~", Least},
};

TEST(Integers, WrapAndDivideTowardsZero) {
  for (const auto& [beneath, top, name, result] : IntegerCases) {
    Calculator calculator;
    for (const std::int32_t operand : {beneath, top}) {
      calculator.interpreter.PushCopy(CaValue(operand));
    }
    const Written written = calculator.Run(std::string(name) + " # ");
    EXPECT_EQ(written.output, " " + std::to_string(result.value_or(top)) + "\n")
        << beneath << " " << top << " " << name;
    EXPECT_EQ(written.errors, result ? "" : "\a \n") << beneath << " " << top << " " << name;
  }
}

}  // namespace
