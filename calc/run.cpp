#include "calc/run.h"

#include <cerrno>
#include <cstddef>
#include <memory>

#include "calc/character_source.h"
#include "calc/dispatch.h"
#include "calc/failure_observer.h"
#include "calc/interpreter.h"
#include "calc/item_observer.h"
#include "calc/next_item.h"
#include "calc/reports.h"
#include "geometry/messages.h"

namespace {

/// The object that `item` stands for.
[[gnu::always_inline]] inline CaObject* ObjectOf(CaInterpreter& interpreter, const CaItem& item) {
  switch (item.kind) {
    case CaItemKind::Number:
      return new CaValue(item.number);
    case CaItemKind::Text:
      return new CaValue(item.text);
    case CaItemKind::Compound:
      return item.value;
    case CaItemKind::Name: {
      CaName& name = interpreter.table.names.Intern(item.Text());
      return new CaVariable(name, *interpreter.table.Find(name));
    }
    default:
      return new CaOperator(item.entry->function, item.entry->name, NothingValue,
                            item.entry->alwaysRun);
  }
}

/// Leaves an item alone.
void Drop(const CaItem& item) {
  if (item.kind == CaItemKind::Compound) DestroyAsValue(item.value);
}

/// Runs an operator. Skipping one item ends with it, unless it was a block that began.
[[gnu::always_inline]] inline void RunOperator(CaInterpreter& interpreter,
                                               const CaOperatorEntry& entry) {
  const std::int32_t before = interpreter.skipLevel;
  const int done = interpreter.Apply(entry.function, entry.alwaysRun);
  if (before == 0 && interpreter.skipLevel == 0) interpreter.skipLevel = -1;
  if (before < 0 && interpreter.skipLevel == 0 && interpreter.observer != nullptr) {
    interpreter.observer->SkippingBegan(interpreter);
  }
  if (done == 0) ReportFailure(interpreter, entry);
}

/// Whether one more item may run.
bool TakeStep(CaInterpreter& interpreter) {
  if (interpreter.stepsLeft == 0) return false;
  --interpreter.stepsLeft;
  return true;
}

/// A run that is watched has a limit of steps or somebody who is told of its items.
template <bool IsWatched>
void RunItems(CaInterpreter& interpreter) {
  for (;;) {
    if (IsRaised(*interpreter.interruptRequested)) throw CaInterruption();
    const CaItem item = NextItem(interpreter);
    if (IsWatched && !TakeStep(interpreter)) {
      Drop(item);
      throw CaInterruption();
    }
    if (item.kind == CaItemKind::Operator) {
      RunOperator(interpreter, *item.entry);
    } else if (interpreter.skipLevel < 0) {
      interpreter.PushOwned(ObjectOf(interpreter, item));
    } else {
      Drop(item);
    }
    if (IsWatched && interpreter.itemObserver != nullptr) {
      interpreter.itemObserver->ItemRan(interpreter, item);
    }
  }
}

void RunToTheEnd(CaInterpreter& interpreter) {
  ReleaseAtThreadEnd();
  const CyMessageScope messages(ReportWarning, &interpreter);
  try {
    const bool isWatched =
        interpreter.itemObserver != nullptr || interpreter.stepsLeft != CaInterpreter::NoLimit;
    isWatched ? RunItems<true>(interpreter) : RunItems<false>(interpreter);
  } catch (const EndOfInput& end) {
    if (interpreter.observer != nullptr) interpreter.observer->InputEnded(interpreter, end.within);
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

constexpr std::size_t LongestPath = 255;

void SkipInterpreterLine(CaCharacterSource& source) {
  if (!source.StartsWith("#!")) return;
  int c = source.Read();
  while (c != '\n' && c != CaCharacterSource::End) c = source.Read();
}

int OpenAndRun(CaInterpreter& interpreter, const char* path, bool isExecutable) {
  interpreter.fileProblem = 0;
  if (interpreter.nestDepth >= DeepestNesting) return ReportUnopenedFile(interpreter, path);
  const std::unique_ptr<CaCharacterSource> source =
      CaCharacterSource::OpenFile(path, interpreter.interruptRequested, interpreter.output);
  if (source == nullptr) {
    interpreter.fileProblem = errno;
    return ReportUnopenedFile(interpreter, path);
  }
  if (isExecutable) SkipInterpreterLine(*source);
  return RunSource(interpreter, *source);
}

}  // namespace

std::string ProgramPath(std::string_view name) {
  std::string path(name.substr(0, LongestPath));
  if (path.find('.') == std::string::npos) path += ".3dc";
  return path;
}

int RunFile(CaInterpreter& interpreter, const char* path) {
  return OpenAndRun(interpreter, path, false);
}

int RunExecutableFile(CaInterpreter& interpreter, const char* path) {
  return OpenAndRun(interpreter, path, true);
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

void RunTopLevel(CaInterpreter& interpreter) {
  RunToTheEnd(interpreter);
  if (interpreter.input != &CaCharacterSource::StandardInput()) interpreter.input->Close();
  interpreter.PopValues(interpreter.Depth());
  interpreter.DestroyVariables();
}

CaObject* NextObject(CaInterpreter& interpreter) {
  return ObjectOf(interpreter, NextItem(interpreter));
}
