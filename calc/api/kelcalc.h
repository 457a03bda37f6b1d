#pragma once

/// The calculator of KelSave as a part of another program.
///
///   kel::Calculator calculator;
///   calculator.OnOutput([](std::string_view text) { std::cout << text; });
///   calculator.Set("eye", kel::Value::Point(0, -10, 5));
///   const kel::Outcome outcome = calculator.Run("eye v(0, 0, 1) + #");
///   if (!outcome) std::cerr << outcome.Text() << '\n';
///
/// A calculator is a stack, variables and what programs print. Calculators share nothing: a process
/// may hold any number of them, each used by one thread at a time. Nothing is printed but by the
/// callbacks, nothing ends the process, and errors are results: only lack of memory is thrown
/// (std::bad_alloc), and what a callback throws passes through.
///
/// This header needs C++17 and includes nothing of ours. The language is told of in language.md;
/// who wants the engine itself finds its headers in the folders calc/ and geometry/.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CaCharacterSource;
struct CaInterpreter;

namespace kel {

/// The types of values, numbered as the language numbers them.
enum class Type : std::int32_t {
  Nothing,
  Integer,
  Text,
  Real,
  Vector,
  Point,
  Matrix,
  Quaternion,
  Rotation,
  Scale,
};

/// A value of the language: a plain record that owns what it holds.
struct Value {
  Type type = Type::Nothing;
  std::int32_t integer = 0;  // of an integer
  std::string text;          // of a text, without quotation marks

  /// Of the other types, as many as `Count` says, in the order in which the language writes them:
  /// a matrix as three rows of four, a quaternion with the scalar part first, a rotation as its
  /// axis and its angle in degrees.
  std::array<double, 12> numbers = {};

  static Value Integer(std::int32_t integer);
  static Value Text(std::string_view text);  // up to a NUL
  static Value Real(double number);
  static Value Vector(double x, double y, double z);
  static Value Point(double x, double y, double z);
  static Value Matrix(const std::array<double, 12>& rows);
  static Value Quaternion(double w, double x, double y, double z);
  static Value Rotation(double x, double y, double z, double degrees);
  static Value Scale(double x, double y, double z);

  /// How many of `numbers` the type has; 0 for nothing, integers and texts.
  std::size_t Count() const;

  /// Of the same type and, number by number, equal; so no value with a not-a-number equals itself.
  friend bool operator==(const Value& a, const Value& b);
  friend bool operator!=(const Value& a, const Value& b) { return !(a == b); }
};

/// One thing that went wrong in a program, which went on behind it: a failure or a warning of the
/// language, or a string, comment, constant or last word that the end of its text cut off.
struct Failure {
  std::string program;             // the name of the text or the path of the file
  std::int64_t line = 0;           // where the token begins, counted from 1
  std::int64_t column = 0;         // in bytes, counted from 1
  std::string token;               // as it was written, its first bytes
  std::string message;             // what the language says of it, as one line
  std::vector<std::string> rules;  // what the operator would take: "real+real"; empty for others
};

/// How a run ended.
struct Outcome {
  enum class End {
    Complete,     // the program was read to its end
    Interrupted,  // `Interrupt` was called, or `Interruption` was thrown
    OutOfSteps,   // `LimitSteps` had set the limit
    Unopened,     // the file cannot be opened
    Unreadable,   // the program cannot be read to its end
    Refused,      // a program is running already
  };

  End end = End::Complete;
  std::size_t failures = 0;  // of which OnFailure was told
  std::string reason;        // why, when the end is not `Complete`

  /// Read to its end, and nothing failed.
  explicit operator bool() const { return end == End::Complete && failures == 0; }

  /// All of this as one line; empty when all is well.
  std::string Text() const;
};

/// A program that comes in pieces, as from a pipe or from a keyboard. A run takes from it what it
/// needs; after an interruption the next run goes on where it was left.
class Source {
 public:
  /// Fills up to `size` bytes at `block` and returns how many; 0 at the end, which is final; less
  /// than 0 when it can read no further, the negative of the system's number (errno) for the
  /// reason. Asked for more only when all before has been run.
  using Read = std::function<std::ptrdiff_t(char* block, std::size_t size)>;

  /// Messages call it `name`.
  Source(Read read, const std::string& name);
  ~Source();
  Source(Source&&) noexcept;
  Source& operator=(Source&&) noexcept;

  /// Forgets what was read and has not been run.
  void Drop() noexcept;

 private:
  friend class Calculator;
  std::unique_ptr<CaCharacterSource> source_;
};

/// Thrown by a `Read`, ends the run as `Interrupt` does, but at once: a word, string or constant
/// that the program has begun is dropped.
struct Interruption {};

class Calculator {
 public:
#ifndef _WIN32
  /// Empty, with no callbacks and no limit. Not on Windows, whose C library has no streams that
  /// functions receive.
  Calculator();
#endif

  /// The same, but programs print on `output`, and the language's messages go to `messages`, as in
  /// kelcalc: OnOutput and OnMessage receive nothing. Both are borrowed.
  Calculator(std::FILE* output, std::FILE* messages);

  ~Calculator();
  Calculator(Calculator&&) noexcept;
  Calculator& operator=(Calculator&&) noexcept;

  // Callbacks run on the thread of the run and may look at the calculator, but neither change nor
  // run it. Without one, what it would be given is dropped.

  /// Is given what programs print, in pieces that end anywhere.
  void OnOutput(std::function<void(std::string_view)> receive);

  /// Is given the language's own messages, with the bytes that kelcalc writes.
  void OnMessage(std::function<void(std::string_view)> receive);

  /// Is told of each failure, after all that was printed before it was handed over.
  void OnFailure(std::function<void(const Failure&)> receive);

  // Runs. A second one within a callback is refused. Stack, variables and skipping go on from one
  // run to the next, as from one line of a session to the next.

  /// Runs a program, which messages call `name`. Its last word counts without a blank behind it.
  Outcome Run(std::string_view program, const std::string& name = "<program>");

  /// The same for the file at `path`, in which the last word counts with a blank behind it only. A
  /// first line that begins with "#!" is passed over.
  Outcome RunFile(const std::string& path);

  /// The same for what `source` has left. What its `Read` throws passes through.
  Outcome Run(Source& source);

  /// Ends the run, or else the next one, between two words. From any thread and from signal
  /// handlers; the calculator must live on meanwhile.
  void Interrupt() noexcept;

  /// Every later run ends after so many words; 0, as at first, is no limit. One word may still take
  /// long: `;read` runs a file, whose words count as well.
  void LimitSteps(std::uint64_t steps) noexcept;

  // The stack. Position 0 is the top.

  std::size_t Depth() const noexcept;
  Value Peek(std::size_t position) const;  // nothing beyond the depth
  void Push(const Value& value);
  void Pop(std::size_t count = 1) noexcept;

  // The variables.

  /// Their names, the most recently defined first.
  std::vector<std::string> Names() const;

  /// Nothing when there is none of that name.
  std::optional<Value> Get(std::string_view name) const;

  /// Defines or replaces it. False, and nothing is done, when `name` is none that a program could
  /// write: it begins with a letter and goes on with letters, digits and "_", at most 255 bytes.
  bool Set(std::string_view name, const Value& value);

  /// Empties stack and variables and ends any skipping.
  void Clear() noexcept;

  /// The engine beneath, for those who include its headers. Lives as long as the calculator.
  CaInterpreter& Engine() noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace kel
