#include "tools/view/text.h"

#include <charconv>
#include <cstddef>

namespace kelview {
namespace {

std::string WithoutMinusZero(const std::string& text) { return text == "-0" ? "0" : text; }

/// The length of the UTF-8 character at the start of `bytes`, or 0 when none is there.
std::size_t CharacterLength(std::string_view bytes) {
  const auto byte = [&](std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U;
  };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  for (std::size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0U) != 0x80) return 0;
  }
  const unsigned start = first << 8U | byte(1);
  const bool overlong = (length == 3 && start < 0xE0A0) || (length == 4 && start < 0xF090);
  const bool surrogate = length == 3 && start >= 0xEDA0 && start < 0xEE00;
  const bool beyond = length == 4 && start >= 0xF490;
  const bool noCharacter = length == 3 && start == 0xEFBF && byte(2) >= 0xBE;
  return overlong || surrogate || beyond || noCharacter ? 0 : length;
}

}  // namespace

std::string NumberText(double number, int digits) {
  char text[48];
  const auto end =
      std::to_chars(text, text + sizeof text, number, std::chars_format::general, digits);
  return WithoutMinusZero({text, end.ptr});
}

std::string FixedText(double number, int decimals) {
  char buffer[400];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, decimals);
  std::string text(buffer, end.ptr);
  if (decimals > 0) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
  }
  return WithoutMinusZero(text);
}

std::string CleanText(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const auto first = static_cast<unsigned char>(bytes[0]);
    const std::size_t length = CharacterLength(bytes);
    if (length > 1) {
      text += bytes.substr(0, length);
    } else if (length == 1) {
      text += (first < 0x20 && first != '\n') || first == 0x7F ? '?' : bytes[0];
    } else if (first < 0xA0) {
      text += '?';  // a control character, were it one
    } else {
      text += static_cast<char>(0xC0 | first >> 6);
      text += static_cast<char>(0x80 | (first & 0x3F));
    }
    bytes.remove_prefix(length == 0 ? 1 : length);
  }
  return text;
}

std::string EscapeMarkup(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

}  // namespace kelview
