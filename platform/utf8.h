#pragma once

#include <string>

/// UTF-8 and wide text, both ways. Bytes that are no UTF-8 become U+DC80 to U+DCFF, one each, which
/// no valid text holds: nothing is lost, and the way back gives the same bytes.

#ifndef _WIN32

/// The next character of `text`, which moves past it. `text` must not be at its end.
wchar_t TakeUtf8(const char*& text);

/// Wide text as UTF-8. False when it is no valid text otherwise.
bool ToUtf8(const wchar_t* text, std::string* utf8);

#endif
