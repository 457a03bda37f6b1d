#include "calc/reader.h"

#include <algorithm>

#include "calc/exit_hook.h"
#include "calc/object.h"

namespace {

/// Both end a comment that is left open.
constexpr int Nul = 0x00;
constexpr int LastByte = 0xFF;

}  // namespace

void EndInput(CaInterpreter& interpreter) {
  if (interpreter.nestDepth <= 0) {
    if (interpreter.input != &CaCharacterSource::StandardInput()) interpreter.input->Close();
    interpreter.PopValues(interpreter.Depth());
    interpreter.DestroyVariables();
    CallExitHook(0);
  }
  throw EndOfInput();
}

void SkipBlanks(CaInterpreter& interpreter) {
  for (;;) {
    switch (TokenStartOf(ReadPastBlanks(interpreter))) {
      case CaTokenStart::End:
        EndInput(interpreter);
      case CaTokenStart::Comment:
        SkipComment(interpreter);
        break;
      case CaTokenStart::Blank:
        break;
      default:
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

void CaTokenText::Append(std::string_view text) {
  const std::size_t kept = view_.size();
  const std::size_t added = std::min(text.size(), Longest - kept);
  if (view_.data() != copy_) std::copy_n(view_.data(), kept, copy_);
  std::copy_n(text.data(), added, copy_ + kept);
  view_ = {copy_, kept + added};
}

const char* CaTokenText::Text() {
  Append({});
  copy_[view_.size()] = '\0';
  return copy_;
}

void AppendRun(CaInterpreter& interpreter, CaCharBit bits, CaTokenText& token) {
  int c = ReadChar(interpreter);
  for (; HasClass(c, bits); c = ReadChar(interpreter)) {
    const char byte = static_cast<char>(c);
    token.Append({&byte, 1});
  }
  PushBackChar(interpreter);
}

namespace {

char* ReadNewText(CaInterpreter& interpreter, CaCharBit bits, const char* prefix) {
  CaTokenText token;
  if (prefix != nullptr) token.Append(prefix);
  AppendRun(interpreter, bits, token);
  return DuplicateText(token.Text());
}

}  // namespace

char* ReadName(CaInterpreter& interpreter, const char* prefix) {
  return ReadNewText(interpreter, NameChar, prefix);
}

char* ReadOpName(CaInterpreter& interpreter, const char* prefix) {
  return ReadNewText(interpreter, OpChar, prefix);
}

int ReadNumber(CaInterpreter& interpreter, bool negate, CaValue*& value) {
  double number = 0.0;
  if (ReadNumber(interpreter, negate, number) == 0) return 0;
  value = new CaValue(number);
  return 1;
}

void ReadStringText(CaInterpreter& interpreter, CaStringText& string) {
  std::size_t length = 0;
  bool escaped = false;
  while (length < CaStringText::Longest) {
    const int c = ReadChar(interpreter);
    if (c == Nul || (!escaped && c == '"')) break;
    escaped = !escaped && c == '\\';
    if (!escaped) string.text[length++] = static_cast<char>(c);
  }
  string.text[length] = '\0';
}

int ReadString(CaInterpreter& interpreter, CaValue*& value) {
  CaStringText string;
  ReadStringText(interpreter, string);
  value = new CaValue(string.text);
  return 1;
}
