#pragma once

#include "platform/base_types.h"
#include "platform/native_path.h"

#ifdef _WIN32

/// The file that a path means. Links are the system's business here: this is the path itself.
class LinkTarget {
 public:
  explicit LinkTarget(const char* path) : path_(path) {}
  const char* Text() const { return path_; }
  bool IsFile(const char* /*path*/) const { return false; }

 private:
  const char* path_;
};

#else

/// The file that a path means: what a symbolic link in the last place points to, whether or not
/// there is such a file, through any number of links; and the path itself where there is no link.
/// Who renames or deletes that file leaves the links alone. Takes no memory; `path` is only kept.
class KEL_PLATFORM_API LinkTarget {
 public:
  explicit LinkTarget(const char* path);
  const char* Text() const { return isLink_ ? target_.Text() : path_; }

  /// Whether this was reached through a link and `path` names the same file.
  bool IsFile(const char* path) const;

 private:
  const char* path_;
  NativePath target_;
  bool isLink_ = false;
};

#endif
