// Objects, lists and the interpreter's operations, where programs do not reach.

#include "calc/object.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "calc/character_source.h"
#include "calc/dispatch.h"
#include "calc/run.h"
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
  EXPECT_EQ(value.type, TypeInteger);
  EXPECT_EQ(value.text, stale);  // where the text was; nothing may look there
  const CaValue source("new");
  value = source;
  EXPECT_EQ(Printed(value), " \"new\"\n");
  EXPECT_NE(value.text, source.text);
  EXPECT_EQ(value.integer, 7);
  EXPECT_EQ(CaValue(source).text, source.text);  // copies share it
}

TEST(Values, AnUnknownTagBecomesNothingAndLeavesTheMembers) {
  CaValue source(2.5);
  source.type = 12;
  EXPECT_EQ(Printed(source), "");
  CaValue value(1.5);
  value = source;
  EXPECT_EQ(value.type, TypeNothing);
  EXPECT_EQ(value.real, 1.5);
}

TEST(Objects, Print) {
  const CaValue two(2.0);
  EXPECT_EQ(Printed(CaObject()), "");
  EXPECT_EQ(Printed(CaVariable("x", nullptr)), " x\n");
  EXPECT_EQ(Printed(CaVariable("x", &two)), " 2.000000\n");
  EXPECT_EQ(Printed(CaVariable(nullptr, nullptr)), "");
  EXPECT_EQ(Printed(CaOperator(nullptr, "+", two, 0)), " +");
}

TEST(Objects, OperatorsRunWhileSkippingOnlyWhenTheyAlwaysRun) {
  CaInterpreter interpreter;
  const OperatorFn fail = [](CaInterpreter&) { return 0; };
  for (const std::int32_t always : {0, 1}) {
    for (const std::int32_t level : {-1, 0, 3}) {
      interpreter.skipLevel = level;
      EXPECT_EQ(CaOperator(fail, "", NothingValue, always).Apply(interpreter),
                level < 0 || always != 0 ? 0 : 1);
    }
  }
}

/// The places of a list's payloads in `payloads`; the links back have to tell the same.
std::string Order(const CaList& list, const CaValue* payloads) {
  const auto place = [&](const CaListNode* node) {
    return static_cast<char>('0' + (static_cast<const CaValue*>(node->payload) - payloads));
  };
  std::string forward;
  std::string backward;
  for (const CaListNode* at = list.head; at != nullptr; at = at->next) forward += place(at);
  for (const CaListNode* at = list.tail; at != nullptr; at = at->previous) backward += place(at);
  EXPECT_EQ(forward, std::string(backward.rbegin(), backward.rend()));
  EXPECT_EQ(forward.size(), static_cast<std::size_t>(list.count));
  return forward;
}

TEST(Lists, KeepTheirLinksWhereverANodeGoes) {
  CaValue payloads[4];
  for (const std::size_t place : {0U, 1U, 2U, 3U}) {
    CaList moved;
    CaList cut;
    CaListNode* nodes[2];
    for (CaValue& payload : payloads) {
      EXPECT_EQ(moved.PushFront(&payload) + cut.PushFront(&payload), 2);
    }
    nodes[0] = moved.head;
    nodes[1] = cut.head;
    for (std::size_t i = 0; i < place; ++i) {
      for (CaListNode*& node : nodes) node = node->next;
    }
    std::string rest = "3210";
    rest.erase(place, 1);
    moved.MoveToFront(nodes[0]);
    EXPECT_EQ(Order(moved, payloads), std::to_string(3 - place) + rest);
    EXPECT_EQ(moved.Remove(nodes[1]), 0) << "the node of another list";
    EXPECT_EQ(cut.Remove(nodes[1]), 1);
    EXPECT_EQ(Order(cut, payloads), rest);
    EXPECT_EQ(cut.PopBack(), payloads + (rest.back() - '0'));
    EXPECT_EQ(cut.PopFront(), payloads + (rest.front() - '0'));
    EXPECT_NE(cut.PopFront(), nullptr);
    EXPECT_EQ(cut.PopFront(), nullptr);
    EXPECT_TRUE(cut.head == nullptr && cut.tail == nullptr && cut.count == 0);
    EXPECT_EQ(cut.Remove(nullptr), 0);
  }
}

TEST(Interpreter, NamesOutliveTheirVariables) {
  CaInterpreter interpreter;
  interpreter.PushCopy(CaVariable("gone", nullptr));
  const char* name = interpreter.Peek(-1)->Name();
  interpreter.PopValues(-3);
  EXPECT_EQ(interpreter.Depth(), 1);
  interpreter.PopValues(5);
  EXPECT_STREQ(name, "gone");
  EXPECT_EQ(interpreter.Peek(0), &NothingValue);
  EXPECT_EQ(interpreter.Peek(-1), &NothingValue);
}

TEST(Interpreter, RedefiningMovesAVariableToTheFront) {
  Calculator calculator;
  calculator.Run("1 x : 1 y : ");
  CaInterpreter& interpreter = calculator.interpreter;
  const CaValue two(2.0);
  interpreter.DefineVariable(CaVariable("x", &two));
  interpreter.DefineVariable(CaVariable(nullptr, &two));
  EXPECT_STREQ(interpreter.VariableNameAt(0), "x");
  EXPECT_STREQ(interpreter.VariableNameAt(1), "y");
  EXPECT_EQ(interpreter.VariableNameAt(2), nullptr);
  EXPECT_EQ(interpreter.FindVariable("x")->real, 2.0);
  EXPECT_EQ(interpreter.FindVariable("X"), &NothingValue);
  // The index follows a list that was changed behind its back.
  interpreter.variables.PushFront(new CaVariable("y", &two));
  EXPECT_EQ(interpreter.FindVariable("y")->real, 2.0);
}

TEST(NextObject, MakesOneObjectOfEachKind) {
  CaCharacterSource source(std::string_view("-2 \"a\" v(1,2,3) name + ;sin "));
  CaInterpreter interpreter;
  interpreter.input = &source;
  for (const int kind :
       {KindValue, KindValue, KindValue, KindVariable, KindOperator, KindOperator}) {
    CaObject* object = NextObject(interpreter);
    EXPECT_EQ(object->Kind(), kind);
    DestroyAsValue(object);
  }
}

/// Every token is cut in two by the end of a block somewhere.
TEST(CharacterSource, BlocksMayEndAnywhere) {
  for (std::size_t size = 1; size < 9; ++size) {
    std::string_view text = "\n[ c ] 12.5e1 ab 3 : \"x y\" # v(1, -2,3) # ab # 2 1 >= # 5 -- - ## ";
    CaCharacterSource source([&](char* block, std::size_t) {
      const std::size_t count = text.copy(block, size);
      text.remove_prefix(count);
      return count;
    });
    Calculator calculator;
    calculator.interpreter.errors = stdout;
    testing::internal::CaptureStdout();
    RunSource(calculator.interpreter, source);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\a \n \"x y\"\n v(1.000000, -2.000000, 3.000000)\n 3.000000\n"
              "\nUnrecognized operator --\n"
              "\nType mismatch for operator -\n\a \n 125.000000\n 5.000000\n")
        << size;
    EXPECT_EQ(source.Position().line, 2);
  }
}

}  // namespace
