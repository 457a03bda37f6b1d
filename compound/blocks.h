#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Objects that are made one after the other, stay where they are and end together. Many small ones
/// take less time and memory so than alone.
template <class Object>
class Blocks {
 public:
  /// The number of the next one, counted from 0. May throw std::bad_alloc, then there is none.
  std::uint32_t Make() {
    if (count_ == blocks_.size() * Size) blocks_.push_back(std::make_unique<Object[]>(Size));
    return count_++;
  }

  Object& operator[](std::uint32_t number) const { return blocks_[number / Size][number % Size]; }

 private:
  static constexpr std::size_t Size = 256;

  std::vector<std::unique_ptr<Object[]>> blocks_;
  std::uint32_t count_ = 0;
};
