#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "calc/char_class.h"
#include "calc/character_source.h"
#include "calc/failure_observer.h"
#include "calc/interpreter.h"
#include "calc/numbers.h"
#include "calc/reports.h"

/// From bytes to tokens.
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
/// `NextItem` (next_item.h) makes an item of each, which the loop of run.h runs. Whatever is read
/// one byte too far is pushed back. The end of the input, or the byte 04, never comes back to a
/// caller: it throws `EndOfInput`, which leads to whoever runs that input, and the token that was
/// being read is lost. The reader knows nothing of files, nesting or processes.

/// Thrown at the end of every input and caught by its runner (run.h).
struct EndOfInput {
  CaUnfinished within = CaUnfinished::Nothing;
};

/// The next byte, 0 to 255; see above for the end of the input.
inline int ReadChar(CaInterpreter& interpreter) {
  const int c = interpreter.input->Read();
  if (c == CaCharacterSource::End || c == EndOfTransmission) throw EndOfInput();
  return c;
}

/// Makes `ReadChar` deliver its last byte once more.
inline void PushBackChar(CaInterpreter& interpreter) { interpreter.input->PushBack(); }

/// Whether a byte that stands at hand, or behind that, may be the end of the input or of the block.
inline bool MayBeTheEnd(unsigned char c) { return c <= EndOfTransmission; }

/// The next byte, which stays unread.
inline int PeekChar(CaInterpreter& interpreter) {
  const auto next = static_cast<unsigned char>(*interpreter.input->AtHand().data());
  if (!MayBeTheEnd(next)) return next;
  const int c = ReadChar(interpreter);
  PushBackChar(interpreter);
  return c;
}

/// Consumes blanks and the byte behind them, which it returns: it may be another blank, at the
/// start of a block or above 7F, and it may be the byte 04.
inline int ReadPastBlanks(CaInterpreter& interpreter) {
  const int c = interpreter.input->ReadPast(
      [](char byte) { return TokenStartOf(byte) == CaTokenStart::Blank; });
  if (c == CaCharacterSource::End) throw EndOfInput();
  return c;
}

/// Consumes blanks and comments; the byte behind them stays unread.
void SkipBlanks(CaInterpreter& interpreter);

/// Called behind "[": consumes the comment and its "]". Comments nest, and "\" takes away the
/// meaning of the next byte. A NUL or the byte FF ends a comment as well.
void SkipComment(CaInterpreter& interpreter);

/// The run of bytes of the class `bits` that follows `prefix`, as many as there are: collected in
/// the interpreter's `token`. Good until the next token.
std::string_view CollectRun(CaInterpreter& interpreter, CaCharBit bits, std::string_view prefix);

/// The same, where it stands in the input if it can: then good until the next block is read. Its
/// first `known` bytes are known to be of the class.
template <CaCharBit bits>
inline std::string_view ReadRun(CaInterpreter& interpreter, std::string_view prefix,
                                std::size_t known) {
  CaCharacterSource& input = *interpreter.input;
  const char* text = input.AtHand().data();
  const std::size_t length = RunLength<bits>(text, known);
  // Only a run whose end is seen is complete.
  if (!prefix.empty() || MayBeTheEnd(static_cast<unsigned char>(text[length]))) {
    return CollectRun(interpreter, bits, prefix);
  }
  input.Skip(length);
  return {text, std::min(length, CaTokenText::LongestName)};
}

/// `known` is 1 when the name's first letter has been seen, which is still unread.
inline std::string_view ReadName(CaInterpreter& interpreter, std::size_t known) {
  return ReadRun<NameChar>(interpreter, {}, known);
}
inline std::string_view ReadOpName(CaInterpreter& interpreter, std::string_view prefix) {
  return ReadRun<OpChar>(interpreter, prefix, 0);
}

/// Reads an unsigned number, directly from the input: one that is the last thing in a file is
/// still read. Returns 1, or 0 after a report; then whatever was consumed stays consumed.
inline int ReadNumber(CaInterpreter& interpreter, bool negate, double& number) {
  if (!ReadUnsigned(*interpreter.input, number)) return ReportBadNumber(interpreter);
  if (negate) number = -number;
  return 1;
}

/// Called behind the opening quotation mark: reads to the closing one, or to a NUL. "\" takes the
/// next byte as it is, a NUL excepted. The text is zero-terminated.
/// Deliberate: after 1024 bytes the string ends without consuming anything more; the rest of the
/// literal, its closing quotation mark included, is ordinary text of the program.
std::string_view ReadString(CaInterpreter& interpreter);
