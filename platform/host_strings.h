#pragma once

/// The narrow and the wide string class of the host's utility library, with what a save uses of
/// them. On every system they are these ones.
///
/// The host's character set is that of the system: on Windows the process's code page, elsewhere
/// UTF-8. Nothing here throws: a text for whose copy there was no memory is a null text.

#include <cstdlib>
#include <memory>

#include "platform/base_types.h"

/// A text in memory of malloc: unlike every kind of `new` it never throws, not even on its way.
struct KelFree {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename Char>
using KelText = std::unique_ptr<Char[], KelFree>;

/// A narrow text that owns its copy.
class KEL_PLATFORM_API CStr {
 public:
  /// A copy of `text`; null counts as the empty text.
  CStr(const char* text);  // NOLINT(google-explicit-constructor): host code writes CStr s = "x"
  CStr(const CStr& source);
  CStr& operator=(const CStr& source);
  ~CStr();

  /// Index of the last `wanted`, negative when there is none.
  int last(char wanted) const;

  /// Removes `count` bytes from `position` on, as far as there are any; returns this text.
  CStr& remove(int position, int count);

  /// The text, good until this object is changed or gone; null when there was no memory for it.
  operator char*();  // NOLINT(google-explicit-constructor): callers pass it on as a text

 private:
  KelText<char> text_;
};

/// A wide text that owns its copy.
class KEL_PLATFORM_API WStr {
 public:
  /// `text` converted from the host's character set; null counts as the empty text. Bytes that
  /// are no UTF-8 become U+DC80 to U+DCFF, one each, which no valid text holds: the conversion
  /// loses nothing, and the way back gives the same file name.
  WStr(const char* text);  // NOLINT(google-explicit-constructor): as CStr
  WStr(const WStr& source);
  WStr& operator=(const WStr& source);
  ~WStr();

  /// The text, good until this object is changed or gone; null when there was no memory for it.
  operator wchar_t*();  // NOLINT(google-explicit-constructor): callers pass it on as a text

 private:
  KelText<wchar_t> text_;
};
