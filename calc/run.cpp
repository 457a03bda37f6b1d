#include "calc/run.h"

#include <memory>

#include "calc/character_source.h"
#include "calc/interpreter.h"
#include "calc/interruption.h"
#include "calc/name_pool.h"
#include "calc/next_item.h"

namespace {

/// Runs the items as they come: pushes values and variables, applies operators, and skips after a
/// false condition.
class ItemRunner {
 public:
  explicit ItemRunner(CaInterpreter& interpreter) : interpreter_(interpreter) {}

  void Real(double number) {
    if (!Skipping()) interpreter_.PushOwned(new CaValue(number));
  }

  void String(const char* text) {
    if (!Skipping()) interpreter_.PushOwned(new CaValue(text));
  }

  void Compound(CaValue* value) {
    if (Skipping()) {
      DestroyAsValue(value);
    } else {
      interpreter_.PushOwned(value);
    }
  }

  /// The value that counts is the one of this moment.
  void Variable(std::string_view name) {
    if (Skipping()) return;
    const CaPooledName pooledName = PooledName(name);
    const CaValue& value = *interpreter_.FindVariable(pooledName);
    interpreter_.PushOwned(new CaVariable(pooledName, value));
  }

  void Operator(const CaOperatorEntry& entry) {
    const bool skippingOne = interpreter_.skipLevel == 0;
    const bool runs = !Skipping() || entry.alwaysRun != 0;
    const int done = runs ? entry.function(interpreter_) : 1;
    if (skippingOne && interpreter_.skipLevel == 0) interpreter_.skipLevel = -1;
    if (done == 0) ReportFailure(interpreter_, entry);
  }

 private:
  bool Skipping() const { return interpreter_.skipLevel >= 0; }

  CaInterpreter& interpreter_;
};

void RunToTheEnd(CaInterpreter& interpreter) {
  ItemRunner runner(interpreter);
  CaItemReader<ItemRunner> reader(interpreter, runner);
  try {
    for (;;) {
      if (*interpreter.interruptRequested != 0) throw CaInterruption();
      reader.ReadItem();
    }
  } catch (const EndOfInput&) {
    return;
  }
}

/// Makes `source` the input for as long as it lives.
class Nested {
 public:
  Nested(CaInterpreter& interpreter, CaCharacterSource& source)
      : interpreter_(interpreter), outer_(interpreter.input) {
    ++interpreter.nestDepth;
    interpreter.input = &source;
  }
  ~Nested() {
    --interpreter_.nestDepth;
    interpreter_.input = outer_;
  }
  Nested(const Nested&) = delete;
  Nested& operator=(const Nested&) = delete;

 private:
  CaInterpreter& interpreter_;
  CaCharacterSource* outer_;
};

}  // namespace

int RunFile(CaInterpreter& interpreter, const char* path) {
  if (interpreter.nestDepth >= DeepestNesting) return ReportUnopenedFile(interpreter, path);
  const std::unique_ptr<CaCharacterSource> source =
      CaCharacterSource::OpenFile(path, interpreter.interruptRequested);
  if (source == nullptr) return ReportUnopenedFile(interpreter, path);
  return RunSource(interpreter, *source);
}

int RunText(CaInterpreter& interpreter, std::string_view text, const char* name) {
  if (interpreter.nestDepth >= DeepestNesting) return ReportUnopenedFile(interpreter, name);
  CaCharacterSource source(text);
  source.name = name;
  return RunSource(interpreter, source);
}

int RunSource(CaInterpreter& interpreter, CaCharacterSource& source) {
  const Nested nested(interpreter, source);
  RunToTheEnd(interpreter);
  return 1;
}

void RunTopLevel(CaInterpreter& interpreter) { RunToTheEnd(interpreter); }
