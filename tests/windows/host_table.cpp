#include "tests/windows/host_table.h"

#include <cstddef>

namespace {

std::string Show(int number) { return std::to_string(number); }
std::string Show(const char* text) { return text; }
std::string Show(const wchar_t* text) { return std::string(text, text + lstrlenW(text)); }
std::string Show(void* pointer) { return pointer == nullptr ? "null" : "pointer"; }

// The object and its table pointer have the same address in memory, wherever that lies in a
// HostTable; this finds the way back.
HostTable* Current = nullptr;

template <int Slot, typename... Arguments>
int __thiscall Called(void* object, Arguments... arguments) {
  if (object != Current->Object()) return Current->Answer(Slot, "of another object");
  std::string shown;
  ((shown += (shown.empty() ? "" : ",") + Show(arguments)), ...);
  return Current->Answer(Slot, shown);
}

template <typename Function>
const void* Address(Function* function) {
  return reinterpret_cast<const void*>(function);
}

// clang-format off
const void* const Table[] = {
    Address(Called<0, void*>), Address(Called<1>), Address(Called<2>), Address(Called<3>),
    Address(Called<4>), Address(Called<5>), Address(Called<6>), Address(Called<7>),
    Address(Called<8, const wchar_t*, int, int>), Address(Called<9, const char*>),
    Address(Called<10, int, int>), Address(Called<11>), Address(Called<12>),
    Address(Called<13, int>), Address(Called<14, int>), Address(Called<15>),
    Address(Called<16, void*>), Address(Called<17>), Address(Called<18>),
    Address(Called<19, const char*>), Address(Called<20>), Address(Called<21>),
};
// clang-format on
static_assert(sizeof Table / sizeof Table[0] == 22);

}  // namespace

HostTable::HostTable() : table_(Table) { Current = this; }

int HostTable::Answer(int slot, const std::string& arguments) {
  calls += std::to_string(slot) + (arguments.empty() ? " " : "(" + arguments + ") ");
  waiting = waiting && GetCursor() == LoadCursorA(nullptr, MAKEINTRESOURCEA(32514));
  if (slot == 0 && whenSaveScene) whenSaveScene();
  return answers[static_cast<std::size_t>(slot)];
}
