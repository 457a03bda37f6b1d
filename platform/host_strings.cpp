#include "platform/host_strings.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>

CStr::CStr(const char* text) : text_(text == nullptr ? "" : text) {}

CStr::~CStr() = default;

int CStr::last(char wanted) const {
  const std::size_t index = text_.rfind(wanted);
  return index == std::string::npos || index > INT_MAX ? -1 : static_cast<int>(index);
}

CStr& CStr::remove(int position, int count) {
  const std::size_t first = position < 0 ? text_.size() : static_cast<std::size_t>(position);
  if (first < text_.size() && count > 0) text_.erase(first, static_cast<std::size_t>(count));
  return *this;
}

CStr::operator char*() { return text_.data(); }

namespace {

#ifdef _WIN32

std::wstring Widened(const char* text) {
  const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  if (size <= 1) return {};
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), size);
  wide.pop_back();  // the terminator
  return wide;
}

#else

/// One form of a UTF-8 character: how its first byte is recognised, how many bytes follow, and
/// the least value that needs the form.
struct Utf8Form {
  std::uint8_t mask;
  std::uint8_t lead;
  int following;
  std::uint32_t least;
};

constexpr Utf8Form Utf8Forms[] = {
    {0x80, 0x00, 0, 0x0}, {0xE0, 0xC0, 1, 0x80}, {0xF0, 0xE0, 2, 0x800}, {0xF8, 0xF0, 3, 0x10000}};

constexpr bool IsCharacter(std::uint32_t value) {
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

/// Reads one character at `next` and moves past it. A byte that begins none is read alone.
/// The text ends with a zero byte, which continues no character, so nothing is read beyond it.
std::uint32_t TakeCharacter(const char*& next) {
  const auto byteAt = [next](int i) { return static_cast<std::uint8_t>(next[i]); };
  for (const Utf8Form& form : Utf8Forms) {
    if ((byteAt(0) & form.mask) != form.lead) continue;
    std::uint32_t value = byteAt(0) & static_cast<std::uint8_t>(~form.mask);
    int i = 1;
    while (i <= form.following && (byteAt(i) & 0xC0U) == 0x80U) {
      value = value << 6U | (byteAt(i++) & 0x3FU);
    }
    if (i <= form.following || value < form.least || !IsCharacter(value)) break;
    next += i;
    return value;
  }
  return 0xDC00U + static_cast<std::uint8_t>(*next++);
}

std::wstring Widened(const char* text) {
  std::wstring wide;
  while (*text != '\0') wide.push_back(static_cast<wchar_t>(TakeCharacter(text)));
  return wide;
}

#endif

}  // namespace

WStr::WStr(const char* text) : text_(Widened(text == nullptr ? "" : text)) {}

WStr::~WStr() = default;

WStr::operator wchar_t*() { return text_.data(); }
