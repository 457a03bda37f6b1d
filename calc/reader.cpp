#include "calc/reader.h"

namespace {

/// Both end a comment that is left open.
constexpr int Nul = 0x00;
constexpr int LastByte = 0xFF;

}  // namespace

void SkipBlanks(CaInterpreter& interpreter) {
  for (;;) {
    const int c = ReadPastBlanks(interpreter);
    if (c == EndOfTransmission) throw EndOfInput();
    if (TokenStartOf(c) == CaTokenStart::Comment) {
      SkipComment(interpreter);
    } else if (!HasClass(c, BlankChar)) {
      return PushBackChar(interpreter);
    }
  }
}

void SkipComment(CaInterpreter& interpreter) {
  bool escaped = false;
  for (std::size_t open = 1; open > 0;) {
    const int c = ReadChar(interpreter);
    if (c == Nul || c == LastByte) return;
    if (!escaped && c == '[') ++open;
    if (!escaped && c == ']') --open;
    escaped = !escaped && c == '\\';
  }
}

std::string_view CollectRun(CaInterpreter& interpreter, CaCharBit bits, std::string_view prefix) {
  CaTokenText& token = interpreter.token;
  token.Begin(CaTokenText::LongestName);
  token.Append(prefix);
  int c = ReadChar(interpreter);
  for (; HasClass(c, bits); c = ReadChar(interpreter)) {
    const char byte = static_cast<char>(c);
    token.Append({&byte, 1});
  }
  PushBackChar(interpreter);
  return token.View();
}

std::string_view ReadString(CaInterpreter& interpreter) {
  CaTokenText& token = interpreter.token;
  token.Begin(CaTokenText::LongestString);
  bool escaped = false;
  while (!token.IsFull()) {
    const int c = ReadChar(interpreter);
    if (c == Nul || (!escaped && c == '"')) break;
    escaped = !escaped && c == '\\';
    const char byte = static_cast<char>(c);
    if (!escaped) token.Append({&byte, 1});
  }
  token.Text();
  return token.View();
}
