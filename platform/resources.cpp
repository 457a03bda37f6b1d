#include "platform/resources.h"

#ifndef _WIN32

#include <algorithm>
#include <map>
#include <string>

struct KelModule {};

namespace {

using HostStrings = std::map<UINT, std::string>;

HostStrings DefaultStrings() {
  return {{60121, "KelBack"}, {60122, "KelBackup.bak"}, {63348, "KelBackupAlternate.bak"}};
}

HostStrings& TheHostStrings() {
  static HostStrings strings = DefaultStrings();
  return strings;
}

KelModule HostExecutable;

}  // namespace

HMODULE GetModuleHandleA(LPCSTR name) { return name == nullptr ? &HostExecutable : nullptr; }

int LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  const HostStrings& strings = TheHostStrings();
  const auto found = strings.find(id);
  const bool known = module == &HostExecutable && found != strings.end();
  const std::size_t room = static_cast<std::size_t>(size) - 1;
  const std::size_t length = known ? found->second.copy(buffer, room) : 0;
  buffer[length] = '\0';
  return static_cast<int>(length);
}

void KelSetHostString(UINT id, const char* text) {
  if (text == nullptr) return KelRemoveHostString(id);
  TheHostStrings()[id] = text;
}

void KelRemoveHostString(UINT id) { TheHostStrings().erase(id); }

void KelResetHostStrings() { TheHostStrings() = DefaultStrings(); }

#endif
