#pragma once

#include <kelsave.h>

/// As little of a host as there can be: one stream, no backup.
class MySaver : public SaveInterface {
 public:
  int SaveScene(void*) override {
    IStream* stream = nullptr;
    ULONG written = 0;
    const DWORD mode = STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE;
    if (FAILED(storage_->CreateStream(L"Title", mode, 0, 0, &stream))) return 1;
    const bool complete = SUCCEEDED(stream->Write("Still life", 10, &written)) && written == 10;
    stream->Release();
    return complete ? 0 : 1;
  }
  int SaveSection1() override { return SUCCEEDED(storage_->Commit(STGC_DEFAULT)) ? 0 : 1; }
  int SaveSection2() override { return 0; }
  int SaveSection3() override { return 0; }
  int SaveSection4() override { return 0; }
  int SaveSection5() override { return 0; }
  int SaveSection6() override { return 0; }
  bool UseAlternateBackupName() override { return false; }
  void* OpenScene(const wchar_t*, int, int) override { return nullptr; }
  int FileExists(const char*) override { return 0; }
  void UpdateAfterSave(int, int) override {}
  void PrepareSave() override {}
  int NeedsPrepareSave() override { return 0; }
  const char* GetDirectory(int) override { return "."; }
  void RunAfterSaveStep(int) override {}
  int HasAfterSaveSteps() override { return 0; }
  void SetStorage(IStorage* storage) override { storage_ = storage; }
  int WantsBackup() override { return 0; }
  void SaveFailed() override {}
  void AnnounceSection(const char*) override {}
  void MarkSaved() override {}
  bool SaveSection5First() override { return true; }

 private:
  IStorage* storage_ = nullptr;
};
