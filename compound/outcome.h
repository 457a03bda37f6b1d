#pragma once

/// How an operation of this folder ended. Lack of memory for what has no size of its own (a name, a
/// run of sectors) is std::bad_alloc instead, where a declaration says so.
enum class Outcome {
  Done,
  NoSpace,  // of the disk, of a quota, of a limit on file sizes or of the format
  NoMemory,
  ReadFailed,
  WriteFailed,
  NoSuchPath,
  BadPath,
  TooManyOpenFiles,
  AccessDenied,
  InUse,  // open already, here or elsewhere
  // Of a file that is opened:
  NoSuchFile,   // in a folder that is there
  NotCompound,  // it does not begin as a compound file does
  OldFormat,
  NewerFormat,
  BadHeader,
  Corrupt,  // it contradicts itself
};

/// What an errno of a call that writes, and of one that opens, comes to; 0 is Done.
Outcome OutcomeOfWriting(int error);
Outcome OutcomeOfOpening(int error);
