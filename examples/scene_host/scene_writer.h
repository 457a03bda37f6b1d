#pragma once

#include <kelsave.h>
#include <filesystem>
#include <string>
#include <vector>

#include "examples/scene_host/scene.h"

/// Saves one scene. Every operation prints what it does. The file gets these streams:
///   Title, Meshes/<one for each mesh>, Materials, Layers, Sections (their names, in order)
class SceneWriter : public SaveInterface {
 public:
  SceneWriter(const Scene& scene, const std::filesystem::path& backupFolder);

  /// Makes one writer report failure, as a full disk would; "" for none.
  void FailAt(const std::string& writer) { failing_ = writer; }

  int SaveScene(void* scene) override;
  int SaveSection1() override;
  int SaveSection2() override;
  int SaveSection3() override;
  int SaveSection4() override;
  int SaveSection5() override;
  int SaveSection6() override;
  bool UseAlternateBackupName() override;
  void* OpenScene(const wchar_t* name, int code, int sceneArgument) override;
  int FileExists(const char* fileName) override;
  void UpdateAfterSave(int first, int second) override;
  void PrepareSave() override;
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
  int Finish(const std::string& writer, bool written);

  Scene scene_;
  std::string backupFolder_;
  std::string failing_;
  IStorage* storage_ = nullptr;  // the library's; good until the last writer has returned
  std::vector<std::string> sections_;
};
