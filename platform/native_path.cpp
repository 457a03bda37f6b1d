#include "platform/native_path.h"

#ifndef _WIN32

#include <climits>
#include <cstring>

static_assert(PATH_MAX == 4096, "a path of this many bytes, without its terminator, is refused");

NativePath::NativePath(const char* text) {
  text_[0] = '\0';
  if (text != nullptr) Append(text);
}

void NativePath::Append(const char* piece) {
  while (*piece != '\0' && length_ < Longest) {
    text_[length_++] = *piece == '\\' ? '/' : *piece;
    ++piece;
  }
  text_[length_] = '\0';
}

void NativePath::LeaveFolder() {
  const char* slash = std::strrchr(text_, '/');
  if (slash == nullptr) {
    *this = NativePath(".");
    return;
  }
  length_ = slash == text_ ? 1 : static_cast<unsigned>(slash - text_);
  text_[length_] = '\0';
}

#endif
