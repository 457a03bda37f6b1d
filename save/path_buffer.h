#pragma once

#include <cstddef>
#include <cstring>

/// A path put together piece by piece in 512 bytes, the terminator included.
class PathBuffer {
 public:
  /// Adds `piece` whole and returns true, or adds nothing and returns false when it does not fit
  /// or is null: a path that was cut short would name another file.
  bool Append(const char* piece) {
    if (piece == nullptr) return false;
    const std::size_t added = std::strlen(piece);
    if (added >= sizeof bytes_ - length_) return false;
    std::memcpy(bytes_ + length_, piece, added + 1);
    length_ += added;
    return true;
  }

  const char* Text() const { return bytes_; }

 private:
  char bytes_[512] = "";
  std::size_t length_ = 0;
};
