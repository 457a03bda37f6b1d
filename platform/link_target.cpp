#include "platform/link_target.h"

#ifndef _WIN32

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace {

constexpr int MostLinks = 40;  // as the system follows

/// Takes one step to what `path` points to; false when it is no link.
bool Follow(NativePath& path) {
  char link[PATH_MAX];
  const ssize_t length = readlink(path.Text(), link, sizeof link - 1);
  if (length <= 0) return false;
  link[length] = '\0';
  if (link[0] == '/') {
    path = NativePath();
  } else {
    path.LeaveFolder();
    path.Append("/");
  }
  path.Append(link);
  return true;
}

}  // namespace

LinkTarget::LinkTarget(const char* path) : path_(path), target_(path) {
  int links = 0;
  while (links <= MostLinks && Follow(target_)) ++links;
  isLink_ = links > 0 && links <= MostLinks;
}

bool LinkTarget::IsFile(const char* path) const {
  struct stat here;
  struct stat there;
  return isLink_ && stat(target_.Text(), &here) == 0 &&
         stat(NativePath(path).Text(), &there) == 0 && here.st_dev == there.st_dev &&
         here.st_ino == there.st_ino;
}

#endif
