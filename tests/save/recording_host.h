#pragma once

#include <string>

#include "save/kelsave.h"

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
  void PrepareSave() override { Record("PrepareSave", 0); }
  int NeedsPrepareSave() override { return Record("NeedsPrepareSave", needsPrepare); }
  const char* GetDirectory(int number) override;
  void RunAfterSaveStep(int step) override;
  int HasAfterSaveSteps() override { return Record("HasAfterSaveSteps", hasAfterSteps); }
  void SetStorage(IStorage* storage) override;
  int WantsBackup() override { return Record("WantsBackup", wantsBackup); }
  void SaveFailed() override { RecordOutcome("SaveFailed"); }
  void AnnounceSection(const char* name) override { Record(std::string("Announce:") + name, 0); }
  void MarkSaved() override { RecordOutcome("MarkSaved"); }
  bool SaveSection5First() override { return Record("SaveSection5First", section5First); }

 private:
  void Note(const std::string& call);
  void RecordOutcome(const std::string& call);
  int Write(const std::string& writer) { return Record(writer, failing == writer ? -1 : 0); }

  template <typename Result>
  Result Record(const std::string& call, Result result) {
    Note(call);
    return result;
  }

  IStorage* kept_ = nullptr;
};
