// Objects, lists and the interpreter's operations, where programs do not reach.

#include "calc/object.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "calc/interpreter.h"

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

TEST(Objects, Print) {
  const CaValue two(2.0);
  EXPECT_EQ(Printed(CaObject()), "");
  EXPECT_EQ(Printed(CaVariable("x", nullptr)), " x\n");
  EXPECT_EQ(Printed(CaVariable("x", &two)), " 2.000000\n");
  EXPECT_EQ(Printed(CaVariable(nullptr, nullptr)), "");
  EXPECT_EQ(Printed(CaOperator(nullptr, "+", two, 0)), " +");
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

/// The names from the most recent on; the links back have to tell the same.
std::string Names(const CaList& list) {
  std::string forward;
  std::string backward;
  for (const CaListNode* at = list.head; at != nullptr; at = at->next) {
    if (at->payload != nullptr) forward += at->payload->Name();
  }
  for (const CaListNode* at = list.tail; at != nullptr; at = at->previous) {
    if (at->payload != nullptr) backward += at->payload->Name();
  }
  EXPECT_EQ(forward, std::string(backward.rbegin(), backward.rend()));
  EXPECT_EQ(list.head == nullptr, list.count == 0);
  return forward;
}

TEST(Interpreter, RedefiningMovesAVariableToTheFront) {
  for (const char* order : {"xzy", "yzx", "zyx"}) {
    CaInterpreter interpreter;
    const CaValue two(2.0);
    for (const char* name : {"x", "y", "z"}) interpreter.DefineVariable(CaVariable(name, &two));
    const std::string first(1, *order);
    interpreter.DefineVariable(CaVariable(first.c_str(), &two));
    interpreter.DefineVariable(CaVariable(nullptr, &two));
    EXPECT_EQ(Names(interpreter.variables), order);
    EXPECT_EQ(interpreter.VariableNameAt(0), first);
    EXPECT_EQ(interpreter.VariableNameAt(3), nullptr);
    EXPECT_EQ(interpreter.FindVariable("X"), &NothingValue);
  }
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
    Names(interpreter.variables);
    std::vector<double> found;
    for (const char* name : {"x", "y", "z", "q"}) {
      found.push_back(interpreter.FindVariable(name)->real);
    }
    EXPECT_EQ(found, change.values) << &change - Changes;
  }
}

}  // namespace
