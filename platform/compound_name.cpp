#include "platform/compound_name.h"

#include "platform/compound_uppercase.h"

namespace {

bool IsCodePoint(std::uint32_t c) { return c < 0xD800 || (c >= 0xE000 && c <= 0x10FFFF); }

bool IsForbidden(std::uint32_t c) { return c == '/' || c == '\\' || c == ':' || c == '!'; }

}  // namespace

HRESULT MakeName(const OLECHAR* text, CompoundName* name) {
  if (text == nullptr || *text == 0) return STG_E_INVALIDNAME;
  std::size_t length = 0;
  std::uint32_t hash = 2166136261U;
  const auto append = [&](char16_t unit) {
    name->units[length++] = unit;
    hash = (hash ^ Uppercase(unit)) * 16777619U;
  };
  for (; *text != 0; ++text) {
    const auto c = static_cast<char32_t>(*text);
    const std::uint32_t letter = c | 0x20;  // nearly every name is letters and digits
    if (length < MaxNameUnits && ((letter - 'a' < 26) || c - '0' < 10)) {
      name->units[length++] = static_cast<char16_t>(c);
      hash = (hash ^ (c >= 'a' ? c - 32 : c)) * 16777619U;
      continue;
    }
    const std::size_t units = c < 0x10000 ? 1 : 2;
    if (length + units > MaxNameUnits || !IsCodePoint(c) || IsForbidden(c)) {
      return STG_E_INVALIDNAME;
    }
    if (units == 2) append(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
    append(static_cast<char16_t>(units == 1 ? c : 0xDC00 + (c & 0x3FF)));
  }
  name->length = static_cast<std::uint8_t>(length);
  name->hash = hash;
  return S_OK;
}

int CompareNames(const char16_t* a, std::size_t aLength, const char16_t* b, std::size_t bLength) {
  if (aLength != bLength) return aLength < bLength ? -1 : 1;
  for (std::size_t i = 0; i < aLength; ++i) {
    if (a[i] == b[i]) continue;
    const int difference = Uppercase(a[i]) - Uppercase(b[i]);
    if (difference != 0) return difference;
  }
  return 0;
}

OLECHAR* NewWideName(const char16_t* units, std::size_t length) {
  auto* wide = static_cast<OLECHAR*>(CoTaskMemAlloc((length + 1) * sizeof(OLECHAR)));
  if (wide == nullptr) return nullptr;
  OLECHAR* to = wide;
  for (std::size_t i = 0; i < length; ++i) {
    const std::uint32_t unit = units[i];
    if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < length) {
      *to++ = static_cast<OLECHAR>(0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00U));
    } else {
      *to++ = static_cast<OLECHAR>(unit);
    }
  }
  *to = 0;
  return wide;
}

bool ToUtf8(const wchar_t* text, std::string* utf8) {
  for (; *text != 0; ++text) {
    const auto c = static_cast<char32_t>(*text);
    if (c >= 0xDC80 && c <= 0xDCFF) {  // a byte that was no UTF-8, as WStr keeps it
      *utf8 += static_cast<char>(c & 0xFFU);
      continue;
    }
    if (!IsCodePoint(c)) return false;
    const unsigned tails = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr std::uint32_t Leads[] = {0x00, 0xC0, 0xE0, 0xF0};
    *utf8 += static_cast<char>(Leads[tails] | (c >> (6 * tails)));
    for (unsigned left = tails; left > 0; --left) {
      *utf8 += static_cast<char>(0x80 | ((c >> (6 * (left - 1))) & 0x3F));
    }
  }
  return true;
}
