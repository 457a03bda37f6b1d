#include "tools/compound_check/compound_bytes.h"

namespace compound {

std::uint64_t Number(std::string_view bytes, std::size_t offset, int width) {
  std::uint64_t value = 0;
  for (int i = width - 1; i >= 0; --i) {
    value = value << 8 | static_cast<std::uint8_t>(bytes[offset + static_cast<std::size_t>(i)]);
  }
  return value;
}

std::uint32_t Word(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(Number(bytes, offset, 4));
}

std::uint64_t CeilDivide(std::uint64_t size, std::uint64_t unit) {
  return size / unit + (size % unit != 0 ? 1 : 0);
}

bool ReadBytes(std::istream& file, std::uint64_t offset, std::uint64_t length, std::string& bytes) {
  bytes.assign(static_cast<std::size_t>(length), '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(offset));
  file.read(bytes.data(), static_cast<std::streamsize>(length));
  return file.good();
}

}  // namespace compound
