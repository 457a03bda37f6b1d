#pragma once

class LinkTarget;
class SaveInterface;

/// Moves the file `target`, which the host calls `fileName`, to the backup's name in the folder
/// that `host` names, in place of an older backup, and makes it writable. Whether that succeeded is
/// not looked at: when the move failed, the save overwrites the old file.
/// Nothing is done when there is no host string 60121, when the bare name begins with the first
/// seven characters of it, when the backup's path has more than 511 bytes, or when a link leads
/// from `fileName` to the older backup.
/// Returns false, and has done nothing, only when there is no memory or `target` is unknown.
bool KeepBackup(SaveInterface& host, const char* fileName, const LinkTarget& target);
