#include "platform/path.h"

#ifndef _WIN32

#include <climits>
#include <cstddef>
#include <new>

#include "compound/disk.h"

static_assert(PATH_MAX < sizeof(NativePath), "the system refuses what fills the buffer");

NativePath::NativePath(const char* path) {
  std::size_t length = 0;
  for (; path != nullptr && path[length] != '\0' && length < PATH_MAX; ++length) {
    text_[length] = path[length] == '\\' ? '/' : path[length];
  }
  text_[length] = '\0';
}

LinkTarget::LinkTarget(const char* path) : path_(path) {
  try {
    const std::string native = NativePath(path).Text();
    isKnown_ = FollowLinks(native, &target_) == 0;
    isLink_ = isKnown_ && target_ != native;
  } catch (const std::bad_alloc&) {
    isKnown_ = false;
  }
}

const char* LinkTarget::Text() const {
  if (!isKnown_) return nullptr;
  return isLink_ ? target_.c_str() : path_;
}

bool LinkTarget::IsFile(const char* path) const try {
  if (!isLink_) return false;
  struct stat here;
  struct stat there;
  return CurrentDisk().StatusOf(target_.c_str(), &here) == 0 &&
         CurrentDisk().StatusOf(NativePath(path).Text(), &there) == 0 &&
         here.st_dev == there.st_dev && here.st_ino == there.st_ino;
} catch (const std::bad_alloc&) {
  return true;  // the careful answer: a file that may be the same one is not replaced
}

#endif
