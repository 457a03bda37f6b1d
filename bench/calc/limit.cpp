// The limit: only scans a program's text, converts every number in it, and prints as many as the
// program would. Arguments: the file, numbers printed a line.

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <system_error>

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c | 32) >= 'a' && (c | 32) <= 'z'; }

std::string ReadWhole(const char* path) {
  std::string text;
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) std::exit(1);
  char block[1 << 16];
  while (const std::size_t count = std::fread(block, 1, sizeof block, file)) {
    text.append(block, count);
  }
  std::fclose(file);
  return text;
}

void Print(double value, std::string& output) {
  char digits[512];
  const auto end = std::to_chars(digits, std::end(digits), value, std::chars_format::fixed, 6).ptr;
  output += ' ';
  output.append(digits, end);
  if (output.size() > 1 << 16) {
    std::fwrite(output.data(), 1, output.size(), stdout);
    output.clear();
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const std::string text = ReadWhole(arguments[1]);
  const int printed = std::atoi(arguments[2]);
  std::string output;
  double last = 0;
  double sum = 0;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) {
    if (IsDigit(*at) || (*at == '-' && at + 1 != end && IsDigit(at[1]))) {
      const auto [after, error] = std::from_chars(at, end, last);
      if (error != std::errc()) return 1;
      sum += last;
      at = after;
    } else if (IsLetter(*at)) {
      while (at != end && (IsLetter(*at) || IsDigit(*at))) ++at;
    } else {
      if (*at == '\n') {
        for (int i = 0; i < printed; ++i) Print(last, output);
      }
      ++at;
    }
  }
  std::fwrite(output.data(), 1, output.size(), stdout);
  std::fprintf(stderr, "%g\n", sum);
  return 0;
}
