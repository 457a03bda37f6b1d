#pragma once

/// A path in the system's own form: every backslash became a slash. It takes no memory, so making
/// one cannot fail. A null text gives the empty path. A text that is too long for the system is cut
/// to a length that the system refuses as well (ENAMETOOLONG), so it never names another file.
class NativePath {
 public:
  explicit NativePath(const char* text = nullptr);

  const char* Text() const { return text_; }

  char* Data() { return text_; }

  /// Adds `piece` at the end.
  void Append(const char* piece);

  /// Leaves only the folder: up to the last slash, which stays when it is the first character; the
  /// current folder when there is none.
  void LeaveFolder();

 private:
  static constexpr unsigned Longest = 4096;  // one more than the system takes
  char text_[Longest + 1];
  unsigned length_ = 0;
};
