#include "calc/character_source.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "calc/interruption.h"

namespace {

constexpr std::size_t BlockSize = 64 * 1024;

/// Returns what the system's read returns: a count, 0 at the end, -1 for an error.
std::ptrdiff_t ReadDescriptor(int descriptor, char* block, std::size_t size) {
#ifdef _WIN32
  return _read(descriptor, block, static_cast<unsigned>(size));
#else
  return read(descriptor, block, size);
#endif
}

/// Whether a read that returned `count` was broken off by a signal, before it got anything.
bool WasBrokenOff(std::ptrdiff_t count) { return count < 0 && errno == EINTR; }

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

  std::ptrdiff_t Read(char* block, std::size_t size) const {
    return ReadDescriptor(number_, block, size);
  }

 private:
  int number_;
};

/// A read that fails counts as the end.
std::size_t CountOrNone(std::ptrdiff_t count) {
  return count < 0 ? 0 : static_cast<std::size_t>(count);
}

}  // namespace

CaCharacterSource::CaCharacterSource(std::string_view text)
    : begin_(text.data()), next_(text.data()), end_(text.data() + text.size()) {}

CaCharacterSource::CaCharacterSource(Fill fill) : fill_(std::move(fill)) {}

std::unique_ptr<CaCharacterSource> CaCharacterSource::OpenFile(
    const char* path, const volatile std::sig_atomic_t* interruptRequested) {
  const int number = OpenDescriptor(path);
  if (number < 0) return nullptr;
  auto file = std::make_shared<Descriptor>(number);
  // The system opens a folder like a file; only reading from it fails.
  char nothing = 0;
  if (file->Read(&nothing, 0) < 0) return nullptr;
  auto source = std::make_unique<CaCharacterSource>(
      [file, interruptRequested](char* block, std::size_t size) {
        std::ptrdiff_t count = 0;
        do {
          if (interruptRequested != nullptr && *interruptRequested != 0) throw CaInterruption();
          count = file->Read(block, size);
        } while (WasBrokenOff(count));
        return CountOrNone(count);
      });
  source->name = path;
  return source;
}

CaCharacterSource& CaCharacterSource::StandardInput() {
  static CaCharacterSource source{Fill(ReadStandardInput)};
  return source;
}

std::size_t CaCharacterSource::ReadStandardInput(char* block, std::size_t size) {
  std::ptrdiff_t count = 0;
  do {
    count = ReadDescriptor(0, block, size);
  } while (WasBrokenOff(count));
  return CountOrNone(count);
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
  if (block_ == nullptr) block_ = std::make_unique_for_overwrite<char[]>(BlockSize + 1);
  // There is none before the first block, and still none when the first `fill_` threw.
  if (end_ != nullptr) block_[0] = end_[-1];
  const std::size_t count = fill_(block_.get() + 1, BlockSize);
  begin_ = next_ = block_.get() + 1;
  end_ = next_ + count;
  if (count == 0) fill_ = nullptr;
  return count != 0;
}

/// Fills more of the block behind the bytes at hand, of which there are some.
bool CaCharacterSource::Extend() {
  if (!fill_) return false;
  char* end = block_.get() + (end_ - block_.get());
  const auto room = static_cast<std::size_t>(block_.get() + 1 + BlockSize - end);
  if (room == 0) return false;
  const std::size_t count = fill_(end, room);
  end_ += count;
  if (count == 0) fill_ = nullptr;
  return count != 0;
}

/// Counts what was read, so that only the position of the next byte and the beginning of the
/// marked text are left of it.
void CaCharacterSource::LetGoOfBlock() {
  markedPosition_ = MarkedPosition();
  markedBefore_ = MarkedText();
  mark_ = nullptr;
  CountLines(end_, beginPosition_);
  begin_ = end_;
}

/// Counts on from the last time it was asked, so that asking often costs no more than reading.
CaPosition CaCharacterSource::MarkedPosition() {
  if (mark_ == nullptr) return markedPosition_;
  if (mark_ >= begin_) {
    CountLines(mark_, beginPosition_);
    begin_ = mark_;
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

CaPosition CaCharacterSource::Position() const {
  CaPosition position = beginPosition_;
  CountLines(next_, position);
  return position;
}

void CaCharacterSource::CountLines(const char* until, CaPosition& position) const {
  const char* at = begin_;
  while (at < until) {
    const void* newline = std::memchr(at, '\n', static_cast<std::size_t>(until - at));
    if (newline == nullptr) break;
    at = static_cast<const char*>(newline) + 1;
    ++position.line;
    position.column = 1;
  }
  position.column += until - at;
}
