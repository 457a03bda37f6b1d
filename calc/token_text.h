#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

/// The text of a token that is collected byte by byte. What is beyond `limit` is dropped.
class CaTokenText {
 public:
  static constexpr std::size_t LongestName = 255;
  static constexpr std::size_t LongestString = 1024;

  void Begin(std::size_t limit) {
    limit_ = limit;
    length_ = 0;
  }

  void Append(std::string_view text) {
    const std::size_t added = std::min(text.size(), limit_ - length_);
    std::copy_n(text.data(), added, text_ + length_);
    length_ += added;
  }

  bool IsFull() const { return length_ == limit_; }

  std::string_view View() const { return {text_, length_}; }

  /// Zero-terminated, good until the next token begins.
  const char* Text() {
    text_[length_] = '\0';
    return text_;
  }

 private:
  std::size_t limit_ = LongestName;
  std::size_t length_ = 0;
  char text_[LongestString + 1];  // NOLINT: holds something only up to `length_`
};
