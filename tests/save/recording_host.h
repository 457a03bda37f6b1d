#pragma once

#include <kelsave.h>

#include <initializer_list>
#include <string>

#include "save/kelsave_files.h"
#include "tests/folder.h"

/// A host that writes two streams as a careful one does, and writes down every operation that the
/// library calls, with its arguments. In each one it also asks for another save, which must do
/// nothing, and looks at the cursor, which must be the wait cursor; when something is amiss, that
/// is written down too. It takes no memory during a save, so that a test can leave the library
/// none.
class RecordingHost : public SaveInterface {
 public:
  RecordingHost() { calls.reserve(4096); }

  // What the host answers.
  std::string failing;    // the writer that fails
  std::string throwing;   // the operation that throws
  std::string directory;  // for GetDirectory
  int needsPrepare = 0;
  int wantsBackup = 1;
  int hasAfterSteps = 0;
  bool section5First = true;
  bool alternateName = false;
  bool keepsStorage = false;  // holds a reference of its own, in `kept`

  // What was called, separated by blanks.
  std::string calls;

  kel::Storage kept;

  /// Whether a file is all that this host writes, as the library should have made it.
  static bool IsWhole(const std::string& path);

  int SaveScene(void* scene) override;
  int SaveSection1() override {
    return Answer("SaveSection1",
                  failing == "SaveSection1" || FAILED(storage_->Commit(STGC_DEFAULT)));
  }
  int SaveSection2() override { return Answer("SaveSection2", failing == "SaveSection2"); }
  int SaveSection3() override { return Answer("SaveSection3", failing == "SaveSection3" ? -1 : 0); }
  int SaveSection4() override;
  int SaveSection5() override { return Answer("SaveSection5", failing == "SaveSection5"); }
  int SaveSection6() override { return Answer("SaveSection6", failing == "SaveSection6"); }
  bool UseAlternateBackupName() override { return Answer("UseAlternateBackupName", alternateName); }
  void* OpenScene(const wchar_t* name, int code, int sceneArgument) override;
  int FileExists(const char* fileName) override;
  void UpdateAfterSave(int first, int second) override { Note("UpdateAfterSave", {first, second}); }
  void PrepareSave() override { Note("PrepareSave"); }
  int NeedsPrepareSave() override { return Answer("NeedsPrepareSave", needsPrepare); }
  const char* GetDirectory(int number) override {
    return Answer("GetDirectory", directory.c_str(), {number});
  }
  void RunAfterSaveStep(int step) override { Note("RunAfterSaveStep", {step}); }
  int HasAfterSaveSteps() override { return Answer("HasAfterSaveSteps", hasAfterSteps); }
  void SetStorage(IStorage* storage) override;
  int WantsBackup() override { return Answer("WantsBackup", wantsBackup); }
  void SaveFailed() override { NoteOutcome("SaveFailed"); }
  void AnnounceSection(const char* name) override {
    Note("Announce:");
    calls += name;
  }
  void MarkSaved() override { NoteOutcome("MarkSaved"); }
  bool SaveSection5First() override { return Answer("SaveSection5First", section5First); }

 private:
  void Note(const char* call, std::initializer_list<int> numbers = {});
  void NoteOutcome(const char* call);
  int Write(const char* writer, const wchar_t* name, const std::string& bytes);

  template <typename Result>
  Result Answer(const char* call, Result result, std::initializer_list<int> numbers = {}) {
    Note(call, numbers);
    return result;
  }

  IStorage* storage_ = nullptr;  // the library's
};

/// A save that is about to be made: an old file of the text "old" lies in the folder.
struct Situation {
  Folder folder;
  RecordingHost host;
  std::string path;
  int notify = 1;
  int noBackup = 0;

  /// `file` is a separator and the name of the old file.
  explicit Situation(const std::string& file = "\\scene.kel", const std::string& old = "old",
                     const std::string& parent = std::filesystem::temp_directory_path().string())
      : folder(parent), path(folder.Root() + file) {
    host.directory = folder.Root();
    folder.Put(file.substr(1), old);
  }

  int Save() {
    host.calls.clear();
    SetSaveInterface(&host);
    return SaveToFileDLL(path.c_str(), notify, noBackup, 7);
  }
};
