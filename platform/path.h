#pragma once

/// What a path means.

#include <string>

#include "platform/base_types.h"

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

/// A path as the file system understands it: every backslash became a slash. It takes no memory
/// beside itself, so that a file can be deleted when there is none. A null pointer gives an empty
/// path. A text that is too long for the system is cut to a length that the system refuses as well
/// (ENAMETOOLONG), so it never names another file.
class NativePath {
 public:
  explicit NativePath(const char* path);
  const char* Text() const { return text_; }

 private:
  char text_[4097];
};

/// The file that a path means: what a symbolic link in the last place points to, whether or not
/// there is such a file, through any number of links; and the path itself where there is no link.
/// Who renames or deletes that file leaves the links alone. Throws nothing; keeps only the pointer
/// of `path`.
class KEL_PLATFORM_API LinkTarget {
 public:
  explicit LinkTarget(const char* path);

  /// Null when the links could not be followed: the system told an error, there are too many, or
  /// there was no memory. Then nobody knows which file is meant.
  const char* Text() const;

  /// Whether this was reached through a link, and `path` names the same file.
  bool IsFile(const char* path) const;

 private:
  const char* path_;
  std::string target_;
  bool isKnown_ = false;
  bool isLink_ = false;
};

#endif
