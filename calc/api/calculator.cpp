#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <system_error>
#include <utility>

#include "calc/api/conversion.h"
#include "calc/api/kelcalc.h"
#include "calc/char_class.h"
#include "calc/character_source.h"
#include "calc/explain/alternatives.h"
#include "calc/explain/failure_reason.h"
#include "calc/failure_observer.h"
#include "calc/interpreter.h"
#include "calc/run.h"

#ifndef _WIN32
#include "calc/api/text_stream.h"
#endif

namespace kel {
namespace {

constexpr std::uint64_t NoLimit = std::numeric_limits<std::uint64_t>::max();

/// Whether a program could write `name`.
bool IsName(std::string_view name) {
  if (name.empty() || name.size() > 255 || TokenStartOf(name[0]) != CaTokenStart::Name)
    return false;
  for (const char c : name) {
    if (!HasClass(static_cast<unsigned char>(c), NameChar)) return false;
  }
  return true;
}

/// What went wrong with the token that was read last, because of `reason`.
Failure Described(const CaInterpreter& interpreter, std::string_view reason) {
  Failure described;
  const CaPosition position = interpreter.input->MarkedPosition();
  described.program = interpreter.input->name;
  described.line = position.line;
  described.column = position.column;
  described.token = kelcalc::TokenText(interpreter);
  described.message = reason.substr(0, reason.find('\n'));
  return described;
}

/// A value of the engine together with its text, which values share and do not free.
class EngineValue {
 public:
  explicit EngineValue(const Value& value) : value_(ToEngine(value)) {}
  ~EngineValue() { std::free(value_.text); }
  EngineValue(const EngineValue&) = delete;
  EngineValue& operator=(const EngineValue&) = delete;

  const CaValue& Get() const { return value_; }

 private:
  CaValue value_;
};

}  // namespace

/// What stands behind a calculator. It watches the engine and keeps what a callback threw until the
/// engine has come to rest, because neither the engine nor the streams can be left half-way.
struct Calculator::State final : CaFailureObserver {
  State(std::FILE* outputStream, std::FILE* messageStream) {
    interpreter.output = outputStream;
    interpreter.errors = messageStream;
    interpreter.observer = this;
    interpreter.interruptRequested = &interruptRequested;
  }

  void Failed(const CaInterpreter&, CaFailure failure, const char* name,
              const CaOperatorEntry* entry) override {
    ++failures;
    if (!onFailure) return;
    Failure described =
        Described(interpreter, kelcalc::FailureReason(interpreter, failure, name, entry));
    if (entry != nullptr) {
      for (const kelcalc::Alternative& one : kelcalc::AlternativesOf(*entry)) {
        described.rules.push_back(kelcalc::TakenText(one, *entry));
      }
    }
    Tell(described);
  }

  void InputEnded(const CaInterpreter&, CaUnfinished within) override {
    const int error = interpreter.input->Error();
    if (readError == 0) readError = error;
    if (error != 0 || within == CaUnfinished::Nothing) return;
    ++failures;
    if (onFailure) Tell(Described(interpreter, kelcalc::UnfinishedReason(interpreter, within)));
  }

  void Warned(const CaInterpreter&, const char* message) override {
    ++failures;
    if (!onFailure) return;
    // The geometry can let nothing through, lack of memory included.
    const auto tell = [this](const char* reason) { Tell(Described(interpreter, reason)); };
    Guarded(std::function<void(const char*)>(tell), message);
  }

  void Tell(const Failure& failure) {
    HandOver();
    Guarded(onFailure, failure);
  }

  /// Gives away what was printed and is still held back.
  void HandOver() const { std::fflush(interpreter.output); }

  /// Calls back; what it throws ends the run.
  template <typename Callback, typename Argument>
  void Guarded(const Callback& callback, const Argument& argument) noexcept {
    if (!callback || thrown != nullptr) return;
    try {
      callback(argument);
    } catch (...) {
      thrown = std::current_exception();
      interruptRequested = 1;
    }
  }

  class Running;

  template <typename RunIt>
  Outcome Run(const RunIt& runIt);

  std::function<void(std::string_view)> onOutput;
  std::function<void(std::string_view)> onMessage;
  std::function<void(const Failure&)> onFailure;

  std::atomic<int> interruptRequested = 0;
  std::uint64_t stepLimit = NoLimit;
  std::size_t failures = 0;
  int readError = 0;
  bool running = false;
  std::exception_ptr thrown;

#ifndef _WIN32
  std::unique_ptr<TextStream> output;  // what the callbacks receive; null when they receive nothing
  std::unique_ptr<TextStream> messages;
#endif
  CaInterpreter interpreter;  // last, so that it is gone before what it writes to
};

/// Refuses runs within a run, and at its end, however it ends, gives out what was printed.
class Calculator::State::Running {
 public:
  explicit Running(State& state) : state_(state) { state_.running = true; }
  ~Running() {
    state_.HandOver();
    state_.running = false;
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  State& state_;
};

/// Runs what `runIt` runs; it returns 0 for a file that cannot be opened.
template <typename RunIt>
Outcome Calculator::State::Run(const RunIt& runIt) {
  Outcome outcome;
  if (running) return {Outcome::End::Refused, 0, "a program is running already"};
  failures = 0;
  readError = 0;
  interpreter.stepsLeft = stepLimit;
  try {
    const Running now(*this);
    if (runIt() == 0) {
      outcome.end = Outcome::End::Unopened;
      outcome.reason = std::generic_category().message(interpreter.fileProblem);
    }
  } catch (const CaInterruption&) {
    const bool outOfSteps = interpreter.stepsLeft == 0 && interruptRequested == 0;
    outcome.end = outOfSteps ? Outcome::End::OutOfSteps : Outcome::End::Interrupted;
    outcome.reason = outOfSteps ? "the limit of steps was reached" : "interrupted";
    interruptRequested = 0;
  }
  if (thrown != nullptr) {
    interruptRequested = 0;
    std::rethrow_exception(std::exchange(thrown, nullptr));
  }
  if (outcome.end == Outcome::End::Complete && readError != 0) {
    outcome.end = Outcome::End::Unreadable;
    outcome.reason = std::generic_category().message(readError);
  }
  outcome.failures = failures;
  return outcome;
}

Source::Source(Read read, const std::string& name)
    : source_(std::make_unique<CaCharacterSource>(
          [read = std::move(read)](char* block, std::size_t size) {
            try {
              return read(block, size);
            } catch (const Interruption&) {
              throw CaInterruption();
            }
          })) {
  source_->name = name;
}
Source::~Source() = default;
Source::Source(Source&&) noexcept = default;
Source& Source::operator=(Source&&) noexcept = default;

void Source::Drop() noexcept { source_->Skip(source_->AtHand().size()); }

std::string Outcome::Text() const {
  std::string text = reason;
  if (failures != 0) {
    if (!text.empty()) text += "; ";
    text += std::to_string(failures) + (failures == 1 ? " failure" : " failures");
  }
  return text;
}

#ifndef _WIN32
Calculator::Calculator() : Calculator(nullptr, nullptr) {
  State& state = *state_;
  state.output = std::make_unique<TextStream>(
      true, [&state](std::string_view text) { state.Guarded(state.onOutput, text); });
  state.messages = std::make_unique<TextStream>(false, [&state](std::string_view text) {
    state.HandOver();
    state.Guarded(state.onMessage, text);
  });
  state.interpreter.output = state.output->Stream();
  state.interpreter.errors = state.messages->Stream();
}
#endif

Calculator::Calculator(std::FILE* output, std::FILE* messages)
    : state_(std::make_unique<State>(output, messages)) {}
Calculator::~Calculator() = default;
Calculator::Calculator(Calculator&&) noexcept = default;
Calculator& Calculator::operator=(Calculator&&) noexcept = default;

void Calculator::OnOutput(std::function<void(std::string_view)> receive) {
  state_->onOutput = std::move(receive);
}

void Calculator::OnMessage(std::function<void(std::string_view)> receive) {
  state_->onMessage = std::move(receive);
}

void Calculator::OnFailure(std::function<void(const Failure&)> receive) {
  state_->onFailure = std::move(receive);
}

Outcome Calculator::Run(std::string_view program, const std::string& name) {
  std::string text(program);
  text += '\n';  // so that the last word counts
  return state_->Run([&] { return RunText(state_->interpreter, text, name.c_str()); });
}

Outcome Calculator::RunFile(const std::string& path) {
  return state_->Run([&] { return RunExecutableFile(state_->interpreter, path.c_str()); });
}

Outcome Calculator::Run(Source& source) {
  return state_->Run([&] { return RunSource(state_->interpreter, *source.source_); });
}

void Calculator::Interrupt() noexcept { state_->interruptRequested = 1; }

void Calculator::LimitSteps(std::uint64_t steps) noexcept {
  state_->stepLimit = steps == 0 ? NoLimit : steps;
}

std::size_t Calculator::Depth() const noexcept {
  return static_cast<std::size_t>(state_->interpreter.Depth());
}

Value Calculator::Peek(std::size_t position) const {
  if (position >= Depth()) return {};
  return FromEngine(*state_->interpreter.Peek(static_cast<int>(position))->Value());
}

void Calculator::Push(const Value& value) {
  state_->interpreter.PushCopy(EngineValue(value).Get());
}

void Calculator::Pop(std::size_t count) noexcept {
  state_->interpreter.PopValues(static_cast<int>(std::min(count, Depth())));
}

std::vector<std::string> Calculator::Names() const {
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(state_->interpreter.VariableCount()));
  const CaList& variables = state_->interpreter.variables;
  for (const CaListNode* node = variables.head; node != nullptr; node = node->next) {
    names.emplace_back(node->payload->Name());
  }
  return names;
}

std::optional<Value> Calculator::Get(std::string_view name) const {
  const CaValue* value = state_->interpreter.table.Find(name);
  if (value == &NothingValue) return std::nullopt;
  return FromEngine(*value);
}

bool Calculator::Set(std::string_view name, const Value& value) {
  if (!IsName(name)) return false;
  CaVariables& table = state_->interpreter.table;
  const EngineValue content(value);
  table.Define(std::make_unique<CaVariable>(table.names.Intern(name), content.Get()),
               content.Get());
  return true;
}

void Calculator::Clear() noexcept {
  CaInterpreter& interpreter = state_->interpreter;
  interpreter.PopValues(interpreter.Depth());
  interpreter.DestroyVariables();
  interpreter.skipLevel = -1;
}

CaInterpreter& Calculator::Engine() noexcept { return state_->interpreter; }

}  // namespace kel
