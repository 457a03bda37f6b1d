#pragma once

class SaveInterface;

/// Moves the file `fileName` to the backup's name in the folder that `host` names, in place of an
/// older backup, and makes it writable. Says nothing about the outcome, and the save goes on
/// whatever happened: when the move failed, it overwrites the old file.
/// Nothing is done when there is no host string 60121, when the bare name begins with the first
/// seven characters of it, or when the backup's path has more than 511 bytes.
void KeepBackup(SaveInterface& host, const char* fileName);
