#pragma once

/// What a check complains of: where, what, and the expected and the found value in hexadecimal.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace compound {

class Complaints {
 public:
  template <typename... Parts>
  void Add(const Parts&... parts) {
    if (texts.size() >= Limit) return;
    std::ostringstream text;
    text << std::hex << std::showbase;
    ((text << parts << ' '), ...);
    texts.push_back(text.str());
    texts.back().pop_back();
  }

  /// One comparison; true when it holds.
  bool Expect(std::string_view what, std::string_view where, std::uint64_t expected,
              std::uint64_t found) {
    if (expected != found) Add(where, what, "expected", expected, "found", found);
    return expected == found;
  }

  bool Require(bool holds, std::string_view what, std::string_view where, std::uint64_t found) {
    if (!holds) Add(where, what, "found", found);
    return holds;
  }

  const std::vector<std::string>& Texts() const { return texts; }

 private:
  static constexpr std::size_t Limit = 50;  // a file of noise has one for every word

  std::vector<std::string> texts;
};

}  // namespace compound
