#include "save/backup.h"

#include <kelsave.h>
#include <cstddef>

#include "platform/files.h"
#include "platform/host_strings.h"
#include "platform/path.h"
#include "platform/resources.h"
#include "save/path_buffer.h"

namespace {

constexpr UINT SparedNameText = 60121;
constexpr UINT BackupNameText = 60122;
constexpr UINT AlternateBackupNameText = 63348;
constexpr std::size_t SparedLength = 7;
constexpr int BackupDirectory = 13;
constexpr int ReadAndWrite = 0x180;

/// A host string of at most 511 bytes; empty when there is none.
struct HostText {
  char text[512] = "";
  int length;

  explicit HostText(UINT id)
      : length(LoadStringA(GetModuleHandleA(nullptr), id, text, sizeof text)) {}
};

const unsigned char* Bytes(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

// Deliberate: only the backslash counts, so a path with '/' keeps its folders in the bare name.
// Held by "no bare name is compared" in backup_test.cpp.
CStr BareName(const char* fileName) {
  CStr name(fileName);
  const int separator = name.last('\\');
  if (separator >= 0) name.remove(0, separator + 1);
  return name;
}

/// Whether files of this name are never backed up. Without a text to compare with none is made.
bool IsSpared(const char* bareName) {
  const HostText spared(SparedNameText);
  return spared.length <= 0 ||
         files::_mbsnbicmp(Bytes(spared.text), Bytes(bareName), SparedLength) == 0;
}

/// Composes folder, one backslash and name; false when that does not fit.
// Deliberate: the backslash is added after a folder that ends in one, too.
bool Compose(SaveInterface& host, PathBuffer& path) {
  const bool folderFits = path.Append(host.GetDirectory(BackupDirectory)) && path.Append("\\");
  const HostText name(host.UseAlternateBackupName() ? AlternateBackupNameText : BackupNameText);
  return folderFits && path.Append(name.text);
}

// Deliberate: no result is looked at. If the move fails the save overwrites the old file in place.
// Held by WhatIsLeft in backup_test.cpp.
void Replace(const char* backupPath, const LinkTarget& target) {
  if (target.IsFile(backupPath)) return;
  files::KelReplace(target.Text(), backupPath);
  files::_chmod(backupPath, ReadAndWrite);
}

}  // namespace

bool KeepBackup(SaveInterface& host, const char* fileName, const LinkTarget& target) {
  CStr bareName = BareName(fileName);
  if (bareName == nullptr || target.Text() == nullptr) return false;
  if (IsSpared(bareName)) return true;
  PathBuffer backupPath;
  if (Compose(host, backupPath)) Replace(backupPath.Text(), target);
  return true;
}
