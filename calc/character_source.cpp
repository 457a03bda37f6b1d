#include "calc/character_source.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "calc/char_class.h"

#ifdef _WIN32
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

namespace {

constexpr std::size_t BlockSize = 64 * 1024;
constexpr std::size_t Behind = 1 + LookedAtBehind;  // NULs that stand behind a block

/// Returns what the system's read returns: a count, 0 at the end, -1 for an error.
std::ptrdiff_t ReadDescriptor(int descriptor, char* block, std::size_t size) {
#ifdef _WIN32
  return _read(descriptor, block, static_cast<unsigned>(size));
#else
  return read(descriptor, block, size);
#endif
}

int OpenDescriptor(const char* path) {
#ifdef _WIN32
  return _open(path, _O_RDONLY | _O_TEXT);
#else
  return open(path, O_RDONLY | O_CLOEXEC);
#endif
}

void CloseDescriptor(int descriptor) {
#ifdef _WIN32
  _close(descriptor);
#else
  close(descriptor);
#endif
}

/// An open file that is closed with its last copy.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { CloseDescriptor(number_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }

 private:
  int number_;
};

/// Whether a read that failed for `reason` is worth another try; waits until it is.
bool MayTryAgain(int descriptor, int reason) {
  if (reason == EINTR) return true;
#ifdef _WIN32
  static_cast<void>(descriptor);
  return false;
#else
  if (reason != EAGAIN) return false;
  pollfd ready = {descriptor, POLLIN, 0};
  return poll(&ready, 1, -1) >= 0 || errno == EINTR;
#endif
}

/// A `Fill`: what is there; of a terminal one line.
std::ptrdiff_t FillFromDescriptor(int descriptor, char* block, std::size_t size,
                                  const CaInterruptFlag* interruptRequested) {
  for (;;) {
    if (interruptRequested != nullptr && IsRaised(*interruptRequested)) throw CaInterruption();
    const std::ptrdiff_t count = ReadDescriptor(descriptor, block, size);
    if (count >= 0) return count;
    const int reason = errno;
    if (!MayTryAgain(descriptor, reason)) return -std::ptrdiff_t{reason};
  }
}

/// Whether opening or reading the file may wait for somebody else.
bool MayWait(const char* path) {
  struct stat status = {};
  return stat(path, &status) == 0 && (status.st_mode & S_IFMT) != S_IFREG;
}

void HandOn(std::FILE* output) {
  if (output != nullptr) std::fflush(output);
}

/// Counted in bytes first, as many as cannot overflow one: so the compiler takes sixteen at a time.
std::int64_t CountNewlines(const char* at, const char* until) {
  constexpr std::ptrdiff_t Most = 240;
  std::int64_t newlines = 0;
  while (at < until) {
    const char* const stop = at + std::min(until - at, Most);
    std::uint8_t some = 0;
    for (; at < stop; ++at) some = static_cast<std::uint8_t>(some + (*at == '\n' ? 1 : 0));
    newlines += some;
  }
  return newlines;
}

}  // namespace

CaCharacterSource::CaCharacterSource(std::string_view text)
    : fill_([text](char* block, std::size_t size) mutable {
        const std::size_t count = text.copy(block, size);
        text.remove_prefix(count);
        return static_cast<std::ptrdiff_t>(count);
      }) {}

CaCharacterSource::CaCharacterSource(Fill fill) : fill_(std::move(fill)) {}

std::unique_ptr<CaCharacterSource> CaCharacterSource::OpenFile(
    const char* path, const CaInterruptFlag* interruptRequested, std::FILE* output) {
  if (!MayWait(path)) output = nullptr;
  HandOn(output);
  const int number = OpenDescriptor(path);
  if (number < 0) return nullptr;
  auto file = std::make_shared<Descriptor>(number);
  // The system opens a folder like a file; only reading from it fails.
  char nothing = 0;
  if (ReadDescriptor(number, &nothing, 0) < 0) return nullptr;
  auto source = std::make_unique<CaCharacterSource>(
      Fill([file, interruptRequested, output](char* block, std::size_t size) {
        HandOn(output);
        return FillFromDescriptor(file->Number(), block, size, interruptRequested);
      }));
  source->name = path;
  return source;
}

CaCharacterSource& CaCharacterSource::StandardInput() {
  static CaCharacterSource source{Fill(
      [](char* block, std::size_t size) { return FillFromDescriptor(0, block, size, nullptr); })};
  return source;
}

bool CaCharacterSource::StartsWith(std::string_view text) {
  while (AtHand().size() < text.size()) {
    if (!(next_ == end_ ? Refill() : Extend())) return false;
  }
  return AtHand().starts_with(text);
}

void CaCharacterSource::Close() {
  fill_ = nullptr;
  next_ = end_;
}

bool CaCharacterSource::Refill() {
  if (!fill_) return false;
  LetGoOfBlock();
  if (block_ == nullptr) block_.reset(new char[1 + BlockSize + Behind]);
  // There is none before the first block, and still none when the first `fill_` threw.
  if (end_ != Nothing) block_[0] = end_[-1];
  char* first = block_.get() + 1;
  begin_ = next_ = end_ = first;
  *first = '\0';
  return FillFrom(first);
}

/// Fills more of the block behind the bytes at hand, of which there are some.
bool CaCharacterSource::Extend() { return fill_ && FillFrom(block_.get() + (end_ - block_.get())); }

/// Fills the rest of the block, which begins with `from`. False when nothing came.
bool CaCharacterSource::FillFrom(char* from) {
  const auto room = static_cast<std::size_t>(block_.get() + 1 + BlockSize - from);
  if (room == 0) return false;
  const std::ptrdiff_t count = fill_(from, room);
  if (count < 0) error_ = static_cast<int>(-count);
  if (count <= 0) {
    fill_ = nullptr;
    return false;
  }
  end_ = from + count;
  std::fill_n(from + count, Behind, '\0');
  return true;
}

/// Counts what was read, so that only the position of the next byte and the beginning of the
/// marked text are left of it.
void CaCharacterSource::LetGoOfBlock() {
  markedPosition_ = MarkedPosition();
  markedBefore_ = MarkedText();
  mark_ = nullptr;
  CountLines(end_);
}

/// Counts on from the last time it was asked, so that asking often costs no more than reading.
CaPosition CaCharacterSource::MarkedPosition() {
  if (mark_ == nullptr) return markedPosition_;
  if (mark_ >= begin_) {
    CountLines(mark_);
    markedPosition_ = beginPosition_;
  }
  return markedPosition_;
}

std::string CaCharacterSource::MarkedText() const {
  std::string text = mark_ == nullptr ? markedBefore_ : std::string();
  const char* from = mark_ == nullptr ? begin_ : mark_;
  if (from < next_) {
    const auto length = static_cast<std::size_t>(next_ - from);
    text.append(from, std::min(length, LongestMarked - text.size()));
  }
  return text;
}

/// What stands before `until` is counted then.
void CaCharacterSource::CountLines(const char* until) {
  if (const std::int64_t lines = CountNewlines(begin_, until); lines > 0) {
    beginPosition_.line += lines;
    beginPosition_.column = 1;
    for (begin_ = until; begin_[-1] != '\n';) --begin_;
  }
  beginPosition_.column += until - begin_;
  begin_ = until;
}
