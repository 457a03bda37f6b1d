#include "calc_harness.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "calc/reader.h"
#include "calc/run.h"

namespace {

void KeepForTheFuzzer(std::string_view text) {
  const char* folder = std::getenv("KEL_CORPUS");
  if (folder == nullptr || text.size() > 4096) return;
  const std::size_t name = std::hash<std::string_view>{}(text);
  std::ofstream(std::filesystem::path(folder) / std::to_string(name), std::ios::binary) << text;
}

}  // namespace

Calculator::Calculator() {
  interpreter.output = stdout;
  interpreter.errors = stderr;
}

Written Calculator::Run(std::string_view text) {
  KeepForTheFuzzer(text);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int result = RunText(interpreter, text, "test");
  Written written{testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
  EXPECT_EQ(result, 1) << text;
  EXPECT_EQ(interpreter.nestDepth, 0) << text;
  return written;
}

namespace {

void RunObject(CaInterpreter& interpreter, const CaObject& object) {
  if (object.Kind() != KindOperator) {
    if (interpreter.skipLevel < 0) interpreter.PushCopy(object);
    return;
  }
  const bool skippingOne = interpreter.skipLevel == 0;
  const int done = object.Apply(interpreter);
  if (skippingOne && interpreter.skipLevel == 0) interpreter.skipLevel = -1;
  if (done == 0) std::fputs("\a \n", interpreter.errors);
}

}  // namespace

Written Calculator::RunObjects(std::string_view text) {
  CaCharacterSource source = InBlocks(text, text.size() % 8 + 1);
  interpreter.input = &source;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  try {
    for (;;) {
      CaObject* object = NextObject(interpreter);
      RunObject(interpreter, *object);
      DestroyAsValue(object);
    }
  } catch (const EndOfInput&) {
    return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
  }
}

void RunProgram(const Program& program) {
  const Written written = Calculator().Run(program.text);
  EXPECT_EQ(written.output, program.output) << "output of: " << program.text;
  EXPECT_EQ(written.errors, program.errors) << "errors of: " << program.text;
  const Written byObjects = Calculator().RunObjects(program.text);
  EXPECT_EQ(byObjects.output, written.output) << "by objects: " << program.text;
  EXPECT_EQ(byObjects.errors, written.errors) << "by objects: " << program.text;
}

CaCharacterSource InBlocks(std::string_view text, std::size_t size) {
  return CaCharacterSource([text, size](char* block, std::size_t) mutable {
    const std::size_t count = text.copy(block, size);
    text.remove_prefix(count);
    return static_cast<std::ptrdiff_t>(count);
  });
}

std::string Repeat(std::string_view unit, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += unit;
  return text;
}

std::string ReadTextFile(const char* path) {
  std::ifstream file(path);  // as text: where lines end differently, they read the same
  if (!file) return "(no file)";
  return {std::istreambuf_iterator<char>(file), {}};
}
