#pragma once

#include <kelsave.h>
#include <string>

#include "tests/folder.h"

/// A host that writes down every operation the library calls, with its arguments. In each one it
/// also asks for another save, which must do nothing, and looks at the cursor, which must be the
/// wait cursor; when something is amiss, that is written down too.
class RecordingHost : public SaveInterface {
 public:
  // What the host answers.
  std::string failing;    // the writer that fails
  std::string throwing;   // the operation that throws
  std::string directory;  // for GetDirectory
  int needsPrepare = 0;
  int wantsBackup = 1;
  int hasAfterSteps = 0;
  bool section5First = true;
  bool alternateName = false;
  bool keepsStorage = false;  // holds a reference of its own until ReleaseKept

  // What was called, separated by blanks.
  std::string calls;

  /// Releases the reference that was kept; returns how many are left (0 if none was kept).
  ULONG ReleaseKept();

  int SaveScene(void* scene) override { return Write(scene == this ? "SaveScene" : "[handle]"); }
  int SaveSection1() override { return Write("SaveSection1"); }
  int SaveSection2() override { return Write("SaveSection2"); }
  int SaveSection3() override { return Write("SaveSection3"); }
  int SaveSection4() override { return Write("SaveSection4"); }
  int SaveSection5() override { return Write("SaveSection5"); }
  int SaveSection6() override { return Write("SaveSection6"); }
  bool UseAlternateBackupName() override { return Record("UseAlternateBackupName", alternateName); }
  void* OpenScene(const wchar_t* name, int code, int sceneArgument) override;
  int FileExists(const char* fileName) override;
  void UpdateAfterSave(int first, int second) override;
  void PrepareSave() override { Note("PrepareSave"); }
  int NeedsPrepareSave() override { return Record("NeedsPrepareSave", needsPrepare); }
  const char* GetDirectory(int number) override;
  void RunAfterSaveStep(int step) override { Note("RunAfterSaveStep:" + std::to_string(step)); }
  int HasAfterSaveSteps() override { return Record("HasAfterSaveSteps", hasAfterSteps); }
  void SetStorage(IStorage* storage) override;
  int WantsBackup() override { return Record("WantsBackup", wantsBackup); }
  void SaveFailed() override { NoteOutcome("SaveFailed"); }
  void AnnounceSection(const char* name) override { Note(std::string("Announce:") + name); }
  void MarkSaved() override { NoteOutcome("MarkSaved"); }
  bool SaveSection5First() override { return Record("SaveSection5First", section5First); }

 private:
  void Note(const std::string& call);
  void NoteOutcome(const std::string& call);
  int Write(const std::string& writer) { return Record(writer, failing == writer ? -1 : 0); }

  template <typename Result>
  Result Record(const std::string& call, Result result) {
    Note(call);
    return result;
  }

  IStorage* kept_ = nullptr;
};

/// A save that is about to be made: an old file of the text "old" lies in the folder.
struct Situation {
  Folder folder;
  RecordingHost host;
  std::string path;
  int notify = 1;
  int noBackup = 0;

  /// `file` is a separator and the name of the old file.
  explicit Situation(const std::string& file = "\\scene.kel") : path(folder.Root() + file) {
    host.directory = folder.Root();
    folder.Put(file.substr(1), "old");
  }

  int Save() {
    SetSaveInterface(&host);
    return SaveToFileDLL(path.c_str(), notify, noBackup, 7);
  }
};
