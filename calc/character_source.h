#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// Where the reader is, counted from 1. A column is a byte.
struct CaPosition {
  std::int64_t line;
  std::int64_t column;
};

/// A stream of bytes with one byte of push-back.
///
/// Files are read in blocks of 64 KiB, a terminal line by line, as the system delivers it. The
/// end is final: once met, the source reads no further and holds no open descriptor.
class CaCharacterSource {
 public:
  static constexpr int End = -1;

  /// Fills up to `size` bytes at `block` and returns how many it filled; 0 is the end.
  using Fill = std::function<std::size_t(char* block, std::size_t size)>;

  /// Reads `text` where it stands; it must stay as it is as long as the source is used.
  explicit CaCharacterSource(std::string_view text);

  /// Reads what `fill` delivers, asking whenever a block is used up.
  explicit CaCharacterSource(Fill fill);

  /// The file at `path`, opened for reading as text; null when it cannot be opened or is nothing
  /// that can be read, as a folder. Before each block, and when a signal breaks off the wait for
  /// one, it looks whether `interruptRequested`, which may be null, has been set, and then throws
  /// CaInterruption (interruption.h).
  static std::unique_ptr<CaCharacterSource> OpenFile(
      const char* path, const volatile std::sig_atomic_t* interruptRequested = nullptr);

  /// The one source that reads the process's standard input.
  static CaCharacterSource& StandardInput();

  /// The `Fill` of that one: what is there, up to `size` bytes; of a terminal one line.
  static std::size_t ReadStandardInput(char* block, std::size_t size);

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

  /// The bytes that are at hand without reading on; `Skip` consumes some of them.
  std::string_view AtHand() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }
  void Skip(std::size_t count) { next_ += count; }

  /// Consumes bytes as long as `accept` takes them and the byte behind them, which it returns.
  /// When the block ends first, it returns the first byte of the next one, of which `accept` was
  /// not asked, or `End`.
  template <typename Accept>
  int ReadPast(Accept accept) {
    for (const char* at = next_; at != end_;) {
      const char c = *at++;
      if (accept(c)) continue;
      next_ = at;
      return static_cast<unsigned char>(c);
    }
    next_ = end_;
    return Read();
  }

  /// Lets go of the file and of everything unread.
  void Close();

  /// Where the next byte stands. Counted from the bytes at hand when asked for, so reading pays
  /// only once a block.
  CaPosition Position() const;

  /// Remembers where the last byte that was read stands, until the next call.
  void MarkLast() { mark_ = next_ - 1; }

  /// Where that is, and what was read from there on, up to `LongestMarked` bytes.
  CaPosition MarkedPosition();
  std::string MarkedText() const;
  static constexpr std::size_t LongestMarked = 40;

  /// What messages call it: a path, or what stands for one.
  std::string name;

 private:
  bool Refill();
  bool Extend();
  void LetGoOfBlock();
  void CountLines(const char* until, CaPosition& position) const;

  Fill fill_;                      // empty once the end was met
  std::unique_ptr<char[]> block_;  // its first byte keeps the last byte of the block before
  const char* begin_ = nullptr;    // of what is counted in no line yet
  const char* next_ = nullptr;
  const char* end_ = nullptr;
  CaPosition beginPosition_{1, 1};
  const char* mark_ = nullptr;  // null once its block is gone
  CaPosition markedPosition_{1, 1};
  std::string markedBefore_;  // what blocks that are gone held of the marked text
};
