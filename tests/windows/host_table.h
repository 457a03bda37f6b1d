#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <string>

/// A host as the library sees it: a pointer to a table of 22 functions, made by hand and not from
/// the library's header. Each function notes its slot and arguments. They remove their arguments
/// from the stack themselves, so a call of a wrong slot is a crash if its note is not enough.
class HostTable {
 public:
  HostTable();
  HostTable(const HostTable&) = delete;
  HostTable& operator=(const HostTable&) = delete;

  /// What to hand to SetSaveInterface.
  void* Object() { return &table_; }

  std::array<int, 22> answers{};        // by slot, as the whole register
  std::string calls;                    // slots and arguments, separated by blanks
  bool waiting = true;                  // the wait cursor was shown in every call
  std::function<void()> whenSaveScene;  // run in slot 0

  /// Notes one call and returns its answer.
  int Answer(int slot, const std::string& arguments);

 private:
  const void* const* table_;  // first, as in every object with virtual functions
};
