#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// Where the reader is, counted from 1. A column is a byte.
struct CaPosition {
  std::int64_t line;
  std::int64_t column;
};

/// Not 0 when a run is to stop; set from another thread or by a signal handler.
using CaInterruptFlag = std::atomic<int>;
static_assert(CaInterruptFlag::is_always_lock_free);

inline bool IsRaised(const CaInterruptFlag& flag) {
  return flag.load(std::memory_order_relaxed) != 0;
}

/// Thrown between two tokens when the interpreter's `interruptRequested` is set, and by a source
/// that drops what was begun. It leads out of every file that is being run, to whoever started
/// the outermost one; the inputs are restored on the way, stack and variables stay.
struct CaInterruption {};

/// A stream of bytes with one byte of push-back.
///
/// Files are read in blocks of 64 KiB, a terminal line by line, as the system delivers it. The
/// end is final: once met, the source reads no further and holds no open descriptor.
class CaCharacterSource {
 public:
  static constexpr int End = -1;

  /// Fills up to `size` bytes at `block` and returns how many it filled; 0 at the end; less than 0
  /// when it can read no further, the negative of the system's number (errno) for the reason.
  using Fill = std::function<std::ptrdiff_t(char* block, std::size_t size)>;

  /// Reads `text`, which must stay as it is as long as the source is used.
  explicit CaCharacterSource(std::string_view text);

  /// Reads what `fill` delivers, asking whenever a block is used up.
  explicit CaCharacterSource(Fill fill);

  /// The file at `path`, opened for reading as text; null when it cannot be opened or is nothing
  /// that can be read, as a folder. Before each block, and when a signal breaks off the wait for
  /// one, it looks whether `interruptRequested`, which may be null, has been set, and then throws
  /// `CaInterruption`. For a file that has nothing to read yet it waits; before it may have to, as
  /// with a pipe, what was printed to `output`, which may be null, is written out.
  static std::unique_ptr<CaCharacterSource> OpenFile(
      const char* path, const CaInterruptFlag* interruptRequested = nullptr,
      std::FILE* output = nullptr);

  /// The one source that reads the process's standard input.
  static CaCharacterSource& StandardInput();

  CaCharacterSource(const CaCharacterSource&) = delete;
  CaCharacterSource& operator=(const CaCharacterSource&) = delete;

  /// The next byte, 0 to 255, or `End`.
  int Read() {
    if (next_ == end_ && !Refill()) return End;
    return static_cast<unsigned char>(*next_++);
  }

  /// Makes `Read` deliver the byte that it delivered last once more.
  void PushBack() { --next_; }

  /// Whether the source begins with `text`, in whatever pieces its bytes come. For a source of
  /// which nothing was read yet; `text` is shorter than a block.
  bool StartsWith(std::string_view text);

  /// The bytes that are at hand without reading on; `Skip` consumes some of them. A NUL stands
  /// behind the last.
  std::string_view AtHand() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }
  void Skip(std::size_t count) { next_ += count; }

  /// Whether no more than `run` is at hand.
  bool EndsWith(std::string_view run) const { return run.data() + run.size() == end_; }

  /// Consumes the bytes that `accept` takes, which takes no NUL, and the byte behind them, which it
  /// returns. When the block ends first, it returns the first byte of the next one, of which
  /// `accept` was not asked, or `End`.
  template <typename Accept>
  int ReadPast(Accept accept) {
    const char* at = next_;
    while (accept(*at)) ++at;
    next_ = at;
    return Read();
  }

  /// Lets go of the file and of everything unread.
  void Close();

  /// Why the source could be read no further before its end: the system's number for it (errno);
  /// 0 when it has not ended or has ended as it should.
  int Error() const { return error_; }

  /// Remembers where the last byte that was read stands, until the next call.
  void MarkLast() { mark_ = next_ - 1; }

  /// Where that is, counted when asked for, so reading pays only once a block; and what was read
  /// from there on, up to `LongestMarked` bytes.
  CaPosition MarkedPosition();
  std::string MarkedText() const;
  static constexpr std::size_t LongestMarked = 40;

  /// What messages call it: a path, or what stands for one.
  std::string name;

 private:
  bool Refill();
  bool Extend();
  bool FillFrom(char* from);
  void LetGoOfBlock();
  void CountLines(const char* until);

  static constexpr char Nothing[1] = {};

  Fill fill_;                      // empty once the end was met
  std::unique_ptr<char[]> block_;  // its first byte keeps the last byte of the block before
  const char* begin_ = Nothing;    // of what is counted in no line yet
  const char* next_ = Nothing;
  const char* end_ = Nothing;  // here stands a NUL that is no part of the source
  int error_ = 0;
  CaPosition beginPosition_{1, 1};
  const char* mark_ = nullptr;  // null once its block is gone
  CaPosition markedPosition_{1, 1};
  std::string markedBefore_;  // what blocks that are gone held of the marked text
};
