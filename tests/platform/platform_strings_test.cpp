#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "platform/host_strings.h"
#include "platform/resources.h"

namespace {

TEST(HostStrings, NarrowText) {
  const char* original = "C:\\scenes\\a.kel";
  CStr text(original);
  EXPECT_EQ(text.last('\\'), 9);
  EXPECT_EQ(text.last('/'), -1);
  EXPECT_STREQ(text.remove(0, 10), "a.kel");
  EXPECT_STREQ(text.remove(3, INT_MAX), "a.k");
  EXPECT_STREQ(text.remove(-1, 2).remove(99, 1).remove(0, -1), "a.k");
  EXPECT_STREQ(CStr(nullptr), "");
}

TEST(HostStrings, WideText) {
  struct {
    const char* narrow;
    std::wstring wide;
  } const rows[] = {
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", L"\u00E9\u20AC\U0001F600"},
      {"\xE9.kel", L"\xDCE9.kel"},                        // another character set
      {"a\xE2\x82", L"a\xDCE2\xDC82"},                    // cut short
      {"\xC0\xAF", L"\xDCC0\xDCAF"},                      // a longer form than needed
      {"\xED\xA0\x80", L"\xDCED\xDCA0\xDC80"},            // half a pair
      {"\xF4\x90\x80\x80", L"\xDCF4\xDC90\xDC80\xDC80"},  // beyond the last character
  };
  for (const auto& row : rows) EXPECT_EQ(std::wstring(WStr(row.narrow)), row.wide) << row.narrow;
  EXPECT_EQ(std::wstring(WStr(nullptr)), L"");
}

TEST(HostTexts, LoadedAsTheSystemDoes) {
  KelResetHostStrings();
  const HMODULE host = GetModuleHandleA(nullptr);
  const auto load = [](HMODULE module, UINT id) {
    char buffer[8] = "before";
    const int length = LoadStringA(module, id, buffer, sizeof buffer);
    return std::to_string(length) + buffer;
  };
  EXPECT_EQ(load(host, 60121), "7KelBack");
  EXPECT_EQ(load(host, 60122), "7KelBack") << "cut";
  char none = 'n';
  EXPECT_EQ(LoadStringA(host, 60122, &none, 0), 0);
  KelRemoveHostString(63348);
  EXPECT_EQ(load(host, 63348), "0");
  KelSetHostString(63348, "other");
  EXPECT_EQ(load(host, 63348), "5other");
  EXPECT_EQ(load(nullptr, 63348).front(), '0');
  EXPECT_EQ(GetModuleHandleA("other"), nullptr);
  KelResetHostStrings();
}

}  // namespace
