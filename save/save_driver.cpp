/// The save driver: the steps of a save in their order. It writes no stream itself; the host's
/// writers put everything into the file.

#include <kelsave.h>

#include "platform/files.h"
#include "platform/host_strings.h"
#include "platform/path.h"
#include "platform/resources.h"
#include "platform/storage.h"
#include "platform/window.h"
#include "save/backup.h"

namespace {

SaveInterface* registeredInterface = nullptr;

// Deliberate: a plain number, not an atomic one. It turns away a save that a host's operation asks
// for in the middle of another; it does not make two threads safe.
int saveInProgress = 0;

constexpr CLSID SceneFileClass = {
    0x5A3E0C91, 0x2B7D, 0x4F16, {0x8C, 0x4A, 0xD0, 0x7E, 0x93, 0xB1, 0xF2, 0x58}};
constexpr DWORD CreateOrReplaceExclusively = 0x1012;
constexpr DWORD DocfileFormat = 5;
constexpr int WriteAccess = 2;
constexpr int ReadOnly = 0x100;
constexpr int SceneCode = 0x200E;

/// The four arguments of a save and the host they are for.
struct Save {
  SaveInterface& host;
  const char* fileName;
  int notifyOnSuccess;
  int noBackup;
  int sceneArgument;
};

void ShowCursor(LPCSTR name) { SetCursor(LoadCursorA(nullptr, name)); }

void Begin() {
  saveInProgress = 1;
  ShowCursor(IDC_WAIT);
}

// Deliberate: the arrow is shown outright; the cursor from before the save is not brought back.
int End(int result) {
  ShowCursor(IDC_ARROW);
  saveInProgress = 0;
  return result;
}

void Prepare(const Save& save) {
  if (save.host.NeedsPrepareSave() != 0) save.host.PrepareSave();
}

bool IsWritable(const Save& save, const LinkTarget& target) {
  return save.host.FileExists(save.fileName) == 0 ||
         files::_access(target.Text(), WriteAccess) != -1;
}

bool IsBackupWanted(const Save& save) {
  return save.noBackup == 0 && save.host.WantsBackup() != 0 &&
         save.host.FileExists(save.fileName) != 0;
}

HRESULT CreateSceneFile(const LinkTarget& target, IStorage*& storage) {
  STGOPTIONS options = {};
  options.usVersion = 1;
  options.ulSectorSize = 4096;
  WStr name(target.Text());
  // Without a name the system would make a temporary file.
  if (name == nullptr) return E_OUTOFMEMORY;
  void* created = nullptr;
  const HRESULT result = StgCreateStorageEx(name, CreateOrReplaceExclusively, DocfileFormat, 0,
                                            &options, nullptr, IID_IStorage, &created);
  storage = static_cast<IStorage*>(created);
  return result;
}

void HandOver(const Save& save, IStorage* storage) {
  if (storage != nullptr) storage->SetClass(SceneFileClass);
  save.host.SetStorage(storage);
}

/// The writers in their order, up to the first that fails. Nonzero is failure.
bool WritersFail(const Save& save) {
  SaveInterface& host = save.host;
  if (host.SaveScene(host.OpenScene(L"Scene", SceneCode, save.sceneArgument)) != 0) return true;
  if (host.SaveSection5First()) {
    if (host.SaveSection5() != 0 || host.SaveSection6() != 0) return true;
  } else {
    if (host.SaveSection6() != 0 || host.SaveSection5() != 0) return true;
  }
  host.AnnounceSection("Classes Used");
  return host.SaveSection4() != 0 || host.SaveSection3() != 0 || host.SaveSection2() != 0 ||
         host.SaveSection1() != 0;
}

/// Gives up the driver's one reference. What could fail has failed before, where a writer saw it.
void ReleaseStorage(IStorage* storage) {
  if (storage != nullptr) storage->Release();
}

void ReportSuccess(const Save& save) {
  if (save.notifyOnSuccess != 0) {
    save.host.MarkSaved();
    save.host.UpdateAfterSave(0, 1);
  }
  if (save.host.HasAfterSaveSteps() != 0) {
    save.host.RunAfterSaveStep(0);
    save.host.RunAfterSaveStep(1);
  }
}

int Succeed(const Save& save, const LinkTarget& target, IStorage* storage, bool wasWritable) {
  ReleaseStorage(storage);
  if (!wasWritable) files::_chmod(target.Text(), ReadOnly);
  ReportSuccess(save);
  return End(1);
}

// Deliberate: the backup is not moved back over the file that is gone; the host decides.
int Fail(const Save& save, const LinkTarget& target, IStorage* storage) {
  // Once the storage is released, another process may have saved under this name.
  const bool isRemoved = files::KelRemoveOwn(target.Text()) == 0;
  ReleaseStorage(storage);
  if (!isRemoved) files::remove(target.Text());
  save.host.SaveFailed();
  return End(0);
}

// Deliberate: nothing is caught. A host operation that throws leaves the wait cursor shown and the
// save marked as running. Held by AThrowingHost in save_driver_test.cpp. Nothing else here throws.
int Run(const Save& save) {
  Begin();
  Prepare(save);
  const LinkTarget target(save.fileName);
  const bool wasWritable = IsWritable(save, target);
  if (IsBackupWanted(save) && !KeepBackup(save.host, save.fileName, target)) return End(0);
  IStorage* storage = nullptr;
  // Deliberate: a file that cannot be created is not reported through SaveFailed.
  if (FAILED(CreateSceneFile(target, storage))) return End(0);
  HandOver(save, storage);
  return WritersFail(save) ? Fail(save, target, storage)
                           : Succeed(save, target, storage, wasWritable);
}

}  // namespace

int SetSaveInterface(SaveInterface* host) {
  registeredInterface = host;
  return 1;
}

int SaveToFileDLL(const char* fileName, int notifyOnSuccess, int noBackup, int sceneArgument) {
  // Deliberate: a save inside a save is success, although nothing is done.
  if (saveInProgress != 0) return 1;
  if (registeredInterface == nullptr) return 0;
  return Run({*registeredInterface, fileName, notifyOnSuccess, noBackup, sceneArgument});
}
