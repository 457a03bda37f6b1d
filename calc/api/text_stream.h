#pragma once

#include <cstdio>
#include <functional>
#include <string_view>

namespace kel {

/// A stream of the C library whose bytes a function receives: as they come, or gathered into larger
/// pieces.
class TextStream {
 public:
  /// Where the system cannot make such a stream, or without memory, it throws std::bad_alloc.
  TextStream(bool gathered, std::function<void(std::string_view)> receive);
  ~TextStream();
  TextStream(const TextStream&) = delete;
  TextStream& operator=(const TextStream&) = delete;

  std::FILE* Stream() const { return stream_; }

  /// Gives the function what was gathered.
  void HandOver() { std::fflush(stream_); }

 private:
  std::function<void(std::string_view)> receive_;
  std::FILE* stream_;
};

}  // namespace kel
