#pragma once

#include <cstddef>
#include <string_view>

#include "calc/char_class.h"
#include "calc/character_source.h"
#include "calc/interpreter.h"
#include "calc/numbers.h"
#include "calc/reports.h"

class CaValue;

/// The lowest layer of the reader: characters, blanks, comments and the texts of tokens.
///
///   token      first byte      pattern                                  limit       read by
///   blank      01-20 , 7F-A0   one byte                                 -           SkipBlanks
///   comment    [               up to the matching ], \ takes the next   -           SkipComment
///   name       A-Z a-z         NameChar*                                255 kept    ReadName
///   function   ;               NameChar*, directly behind the ;         255 kept    ReadName
///   operator   OpChar          OpChar*, as many as there are            255 kept    ReadOpName
///   number     0-9 . or -      see numbers.h; - only before 0-9 or .    -           ReadNumber
///   string     "               up to the next ", \ takes the next       1024 kept   ReadString
///   compound   one of vpmqrs(  numbers up to )                          -           constants.h
///
/// Whatever is read one byte too far is pushed back. The end of the input, or the byte 04, never
/// comes back to a caller: inside a nested file it raises `EndOfInput`, which leads to whoever
/// runs the file, and the token that was being read is lost; at the top level it ends the process.

/// Thrown at the end of the input and caught by the runner of that input (run.h).
struct EndOfInput {};

/// The text of a name or an operator: usually where it stands in the input, good until the next
/// block of that is read; else a copy.
class CaTokenText {
 public:
  static constexpr std::size_t Longest = 255;

  std::string_view View() const { return view_; }

  /// Takes over `text`, up to the limit, without copying it.
  void Refer(std::string_view text) { view_ = text.substr(0, Longest); }

  /// Copies the text so far and drops what is beyond the limit.
  void Append(std::string_view text);

  /// Zero-terminated.
  const char* Text();

 private:
  std::string_view view_;
  char copy_[Longest + 1];  // NOLINT: holds something only when `view_` says so
};

/// The text of a string literal.
struct CaStringText {
  static constexpr std::size_t Longest = 1024;
  char text[Longest + 1];
};

/// Ends the input as told above.
[[noreturn]] void EndInput(CaInterpreter& interpreter);

/// The next byte, 0 to 255; see above for the end of the input.
inline int ReadChar(CaInterpreter& interpreter) {
  const int c = interpreter.input->Read();
  if (c == CaCharacterSource::End || c == EndOfTransmission) EndInput(interpreter);
  return c;
}

/// Makes `ReadChar` deliver its last byte once more.
inline void PushBackChar(CaInterpreter& interpreter) { interpreter.input->PushBack(); }

/// The next byte, which stays unread.
inline int PeekChar(CaInterpreter& interpreter) {
  const std::string_view text = interpreter.input->AtHand();
  if (!text.empty() && text[0] != EndOfTransmission) return static_cast<unsigned char>(text[0]);
  const int c = ReadChar(interpreter);
  PushBackChar(interpreter);
  return c;
}

/// Consumes blanks and the byte behind them, which it returns: at the start of a block it may be
/// another blank, and it may be the byte 04.
inline int ReadPastBlanks(CaInterpreter& interpreter) {
  const int c = interpreter.input->ReadPast(
      [](char byte) { return TokenStartOf(byte) == CaTokenStart::Blank; });
  if (c == CaCharacterSource::End) EndInput(interpreter);
  return c;
}

/// Consumes blanks and comments; the byte behind them stays unread.
void SkipBlanks(CaInterpreter& interpreter);

/// Called behind "[": consumes the comment and its "]". Comments nest, and "\" takes away the
/// meaning of the next byte. A NUL or the byte FF ends a comment as well.
void SkipComment(CaInterpreter& interpreter);

/// How long the run of bytes of the class `bits` is that `text` begins with; 0 when the byte behind
/// it is missing or ends the input.
inline std::size_t RunLength(std::string_view text, CaCharBit bits) {
  std::size_t length = 0;
  while (length < text.size() && HasClass(static_cast<unsigned char>(text[length]), bits)) ++length;
  return length == text.size() || text[length] == EndOfTransmission ? 0 : length;
}

/// The run of bytes of the class `bits` that follows, as many as there are, appended to `token`.
void AppendRun(CaInterpreter& interpreter, CaCharBit bits, CaTokenText& token);

/// The same for an empty `token`.
inline void ReadRun(CaInterpreter& interpreter, CaCharBit bits, CaTokenText& token) {
  const std::size_t length = RunLength(interpreter.input->AtHand(), bits);
  if (length == 0) return AppendRun(interpreter, bits, token);
  token.Refer(interpreter.input->AtHand().substr(0, length));
  interpreter.input->Skip(length);
}

/// The same as new texts, which the caller frees with std::free. `prefix` may be null.
char* ReadName(CaInterpreter& interpreter, const char* prefix);
char* ReadOpName(CaInterpreter& interpreter, const char* prefix);

/// Reads an unsigned number, directly from the input: one that is the last thing in a file is
/// still read. Returns 1, or 0 after a report; then whatever was consumed stays consumed.
inline int ReadNumber(CaInterpreter& interpreter, bool negate, double& number) {
  if (!ReadUnsigned(*interpreter.input, number)) return ReportBadNumber(interpreter);
  if (negate) number = -number;
  return 1;
}

/// The same, as a new real value that the caller owns.
int ReadNumber(CaInterpreter& interpreter, bool negate, CaValue*& value);

/// Called behind the opening quotation mark: reads to the closing one, or to a NUL, and
/// terminates the text. "\" takes the next byte as it is.
/// Deliberate: after 1024 bytes the string ends without consuming anything more; the rest of the
/// literal, its closing quotation mark included, is ordinary text of the program.
void ReadStringText(CaInterpreter& interpreter, CaStringText& string);

/// The same, as a new string value that the caller owns; returns 1.
int ReadString(CaInterpreter& interpreter, CaValue*& value);
