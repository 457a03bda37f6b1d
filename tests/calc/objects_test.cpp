// Objects, lists and the interpreter's operations, where programs do not reach.

#include "calc/object.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <utility>

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

/// What the first variable called `name` holds, found by walking.
const CaValue* Walked(const CaList& variables, const std::string& name) {
  for (const CaListNode* node = variables.head; node != nullptr; node = node->next) {
    if (node->payload != nullptr && node->payload->Name() == name) return node->payload->Value();
  }
  return &NothingValue;
}

void Delete(CaObject* variable) { delete static_cast<CaVariable*>(variable); }

// The list is changed behind the table's back; what was a variable's node may be another's.
TEST(Interpreter, FindsVariablesAfterAnyChangeOfTheirList) {
  std::mt19937 random(3);
  CaInterpreter interpreter;
  CaList& list = interpreter.variables;
  for (int i = 1; i < 20000; ++i) {
    CaListNode* node = list.head;
    for (auto steps = random() % 4; node != nullptr && steps > 0; --steps) node = node->next;
    const std::string name(1, "abcdefgh"[random() % 8]);
    const CaValue value(static_cast<double>(i));
    const auto change = random() % 8;
    if (change == 0) {
      interpreter.DefineVariable(CaVariable(name.c_str(), &value));
      EXPECT_TRUE(list.head->payload != nullptr && list.head->payload->Name() == name);
    }
    if (change == 1) Delete(list.PopFront());
    if (change == 2) Delete(list.PopBack());
    if (change == 3 && node != nullptr) Delete(std::exchange(node->payload, nullptr));
    if (change == 4 && node != nullptr && node->payload != nullptr && node == list.head) {
      Delete(std::exchange(node->payload, new CaVariable("other", &value)));
    }
    if (change == 5 && node != nullptr) {
      Delete(node->payload);
      EXPECT_EQ(CaList().Remove(node) + list.Remove(nullptr), 0);
      EXPECT_EQ(list.Remove(node), 1);
    }
    if (change > 5) list.PushFront(new CaVariable(name.c_str(), &value));
    if (random() % 2 == 0) continue;
    for (const char* asked : {name.c_str(), "a", "b", "c", "d", "e", "f", "g", "h", "other"}) {
      EXPECT_EQ(interpreter.FindVariable(asked), Walked(list, asked)) << asked;
    }
  }
  int left = list.count;
  for (; list.head != nullptr; --left) Delete(list.PopBack());
  EXPECT_EQ(left, 0);
}

// No program makes integers.
TEST(Integers, WrapAndDivideTowardsZero) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::int64_t numbers[] = {0, 1, -1, 2, -2, 7, -7, 65536, Limits::min(), Limits::max()};
  for (const std::int64_t a : numbers) {
    for (const std::int64_t b : numbers) {
      const bool divides = b != 0 && !(a == Limits::min() && b == -1);
      const std::int64_t results[] = {a + b, a - b, a * b, divides ? a / b : b, divides ? a % b : b,
                                      -b};
      for (std::size_t i = 0; i < std::size(results); ++i) {
        Calculator calculator;
        for (const std::int64_t operand : {a, b}) {
          calculator.interpreter.PushCopy(CaValue(static_cast<std::int32_t>(operand)));
        }
        const auto [output, errors] = calculator.Run(std::string(1, "+-*/%~"[i]) + " # ");
        EXPECT_EQ(output, " " + std::to_string(static_cast<std::int32_t>(results[i])) + "\n");
        EXPECT_EQ(errors, divides || i < 3 || i == 5 ? "" : "\a \n") << a << " " << b << " " << i;
      }
    }
  }
}

}  // namespace
