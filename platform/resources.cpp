#include "platform/resources.h"

#ifndef _WIN32

#include <map>
#include <optional>
#include <string>
#include <string_view>

struct KelModule {};

namespace {

struct Text {
  UINT id;
  const char* text;
};

constexpr Text FirstTexts[] = {
    {60121, "KelBack"}, {60122, "KelBackup.bak"}, {63348, "KelBackupAlternate.bak"}};

/// What the host has changed of the first texts; nothing for what it has removed. Looking a text up
/// takes no memory: that happens in the middle of a save.
std::map<UINT, std::optional<std::string>>& Changes() {
  static std::map<UINT, std::optional<std::string>> changes;
  return changes;
}

/// The text with the number `id`; null when there is none.
const char* Find(UINT id) {
  const auto changed = Changes().find(id);
  if (changed != Changes().end()) return changed->second ? changed->second->c_str() : nullptr;
  for (const Text& first : FirstTexts) {
    if (first.id == id) return first.text;
  }
  return nullptr;
}

KelModule HostExecutable;

}  // namespace

HMODULE GetModuleHandleA(LPCSTR name) { return name == nullptr ? &HostExecutable : nullptr; }

int LoadStringA(HINSTANCE module, UINT id, LPSTR buffer, int size) {
  if (buffer == nullptr || size <= 0) return 0;
  const char* text = module == &HostExecutable ? Find(id) : nullptr;
  const std::string_view found = text != nullptr ? text : "";
  const std::size_t length = found.copy(buffer, static_cast<std::size_t>(size) - 1);
  buffer[length] = '\0';
  return static_cast<int>(length);
}

void KelSetHostString(UINT id, const char* text) {
  if (text == nullptr) return KelRemoveHostString(id);
  Changes().insert_or_assign(id, std::string(text));
}

void KelRemoveHostString(UINT id) { Changes().insert_or_assign(id, std::nullopt); }

void KelResetHostStrings() { Changes().clear(); }

#endif
