#pragma once

#include <filesystem>
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

  int SaveScene(void* scene) override;
  int SaveSection1() override { return Write("SaveSection1"); }
  int SaveSection2() override { return Write("SaveSection2"); }
  int SaveSection3() override { return Write("SaveSection3"); }
  int SaveSection4() override { return Write("SaveSection4"); }
  int SaveSection5() override { return Write("SaveSection5"); }
  int SaveSection6() override { return Write("SaveSection6"); }
  bool UseAlternateBackupName() override;
  void* OpenScene(const wchar_t* name, int code, int sceneArgument) override;
  int FileExists(const char* fileName) override;
  void UpdateAfterSave(int first, int second) override;
  void PrepareSave() override { Record("PrepareSave"); }
  int NeedsPrepareSave() override;
  const char* GetDirectory(int number) override;
  void RunAfterSaveStep(int step) override;
  int HasAfterSaveSteps() override;
  void SetStorage(IStorage* storage) override;
  int WantsBackup() override;
  void SaveFailed() override;
  void AnnounceSection(const char* name) override;
  void MarkSaved() override;
  bool SaveSection5First() override;

 private:
  void Record(const std::string& call);
  void RecordOutcome(const std::string& call);
  int Write(const std::string& writer);

  IStorage* kept_ = nullptr;
};

/// An empty folder for one test, removed with everything in it afterwards.
class Folder {
 public:
  Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  /// The path of `name` with '/' before it.
  std::string Path(const std::string& name) const { return (root_ / name).string(); }
  std::string Root() const { return root_.string(); }

  /// Writes a file of this text.
  void Put(const std::string& name, const std::string& text, bool readOnly = false) const;

  /// Every entry as "name=text", in order of their names, "!" after what is read-only; the text is
  /// "new" for a compound file, and a folder has a slash.
  std::string List() const;

 private:
  std::filesystem::path root_;
};
