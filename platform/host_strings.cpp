#include "platform/host_strings.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/utf8.h"

namespace {

/// Room for `size` units; null when there is no memory.
template <typename Char>
KelText<Char> Room(std::size_t size) {
  return KelText<Char>(static_cast<Char*>(std::malloc(size * sizeof(Char))));
}

/// A copy with its terminator; null when there is no memory, and of a null text.
template <typename Char>
KelText<Char> Copied(const Char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t size = std::char_traits<Char>::length(text) + 1;
  KelText<Char> copy = Room<Char>(size);
  if (copy) std::char_traits<Char>::copy(copy.get(), text, size);
  return copy;
}

#ifdef _WIN32

KelText<wchar_t> Widened(const char* text) {
  const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  if (size <= 0) return nullptr;
  KelText<wchar_t> wide = Room<wchar_t>(static_cast<std::size_t>(size));
  if (wide) MultiByteToWideChar(CP_ACP, 0, text, -1, wide.get(), size);
  return wide;
}

#else

KelText<wchar_t> Widened(const char* text) {
  // A character has at least one byte, so there is room for all of them.
  const std::size_t size = std::char_traits<char>::length(text) + 1;
  KelText<wchar_t> wide = Room<wchar_t>(size);
  if (!wide) return nullptr;
  wchar_t* to = wide.get();
  while (*text != '\0') *to++ = TakeUtf8(text);
  *to = L'\0';
  return wide;
}

#endif

}  // namespace

CStr::CStr(const char* text) : text_(Copied(text == nullptr ? "" : text)) {}

CStr::CStr(const CStr& source) : text_(Copied(source.text_.get())) {}

CStr& CStr::operator=(const CStr& source) {
  text_ = Copied(source.text_.get());
  return *this;
}

CStr::~CStr() = default;

int CStr::last(char wanted) const {
  if (!text_) return -1;
  const std::size_t index = std::string_view(text_.get()).rfind(wanted);
  return index == std::string_view::npos || index > INT_MAX ? -1 : static_cast<int>(index);
}

CStr& CStr::remove(int position, int count) {
  const std::size_t length = text_ ? std::char_traits<char>::length(text_.get()) : 0;
  if (position < 0 || count <= 0 || static_cast<std::size_t>(position) >= length) return *this;
  char* gap = &text_[static_cast<std::size_t>(position)];
  const std::size_t behind = length - static_cast<std::size_t>(position);
  const std::size_t removed = std::min(static_cast<std::size_t>(count), behind);
  std::char_traits<char>::move(gap, gap + removed, behind - removed + 1);
  return *this;
}

CStr::operator char*() { return text_.get(); }

WStr::WStr(const char* text) : text_(Widened(text == nullptr ? "" : text)) {}

WStr::WStr(const WStr& source) : text_(Copied(source.text_.get())) {}

WStr& WStr::operator=(const WStr& source) {
  text_ = Copied(source.text_.get());
  return *this;
}

WStr::~WStr() = default;

WStr::operator wchar_t*() { return text_.get(); }
