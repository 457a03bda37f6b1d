/// A small host: saves a scene three times and prints what happens.
///   scene_host FOLDER
/// The first save makes a new file, the second one moves it to the backup, and in the third a
/// writer fails; then the backup is brought back. It leaves FOLDER/scene.kel and exits with 0.

#include <kelsave.h>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

#include "examples/scene_host/scene.h"
#include "examples/scene_host/scene_writer.h"

namespace fs = std::filesystem;

namespace {

void List(const fs::path& folder) {
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::cout << "  on the disk: " << fs::relative(entry.path(), folder).generic_string() << ", "
              << entry.file_size() << " bytes\n";
  }
}

bool Save(const std::string& heading, const fs::path& file) {
  std::cout << heading << "\n";
  const int result = SaveToFileDLL(file.string().c_str(), 1, 0, 0);
  std::cout << "  SaveToFileDLL returned " << result << "\n";
  List(file.parent_path());
  return result == 1;
}

/// The library leaves the backup where it is; bringing it back is for the host to decide.
bool BringBack(const fs::path& backup, const fs::path& file) {
  std::error_code error;
  fs::rename(backup, file, error);
  std::cout << "Bringing the backup back: " << (error ? error.message() : "done") << "\n";
  return !error;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: scene_host FOLDER\n";
    return 2;
  }
  const fs::path folder(arguments[1]);
  const fs::path file = folder / "scene.kel";
  const fs::path backups = folder / "backups";
  std::error_code error;
  fs::create_directories(backups, error);
  fs::remove(file, error);

  SceneWriter host(MakeScene(), backups);
  SetSaveInterface(&host);
  bool asExpected = Save("First save: a new file", file);
  asExpected = Save("Second save: the old file becomes the backup", file) && asExpected;
  host.FailAt("SaveSection6");
  asExpected = !Save("Third save: a writer fails", file) && asExpected;
  asExpected = BringBack(backups / "KelBackup.bak", file) && asExpected;
  List(folder);
  return asExpected ? 0 : 1;
}
