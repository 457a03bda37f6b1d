#include "tests/save/recording_host.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "platform/window.h"

void RecordingHost::Note(const std::string& call) {
  if (!calls.empty()) calls += ' ';
  calls += call;
  const std::string before = calls;
  if (SaveToFileDLL("nested", 1, 0, 0) != 1 || calls != before) calls += "[nested save]";
  if (KelCurrentCursor() != 32514) calls += "[cursor]";
  if (throwing == call) throw std::runtime_error(call);
}

// When the outcome is reported only the reference that the host took for itself may be left.
void RecordingHost::NoteOutcome(const std::string& call) {
  Note(call);
  if (kept_ == nullptr) return;
  kept_->AddRef();
  if (kept_->Release() != 1) calls += "[storage held]";
}

ULONG RecordingHost::ReleaseKept() {
  IStorage* storage = kept_;
  kept_ = nullptr;
  return storage == nullptr ? 0 : storage->Release();
}

void* RecordingHost::OpenScene(const wchar_t* name, int code, int sceneArgument) {
  const std::string known = std::wstring(name) == L"Scene" ? "Scene" : "?";
  Note("OpenScene:" + known + "," + std::to_string(code) + "," + std::to_string(sceneArgument));
  return this;
}

int RecordingHost::FileExists(const char* fileName) {
  std::string path(fileName);
  std::replace(path.begin(), path.end(), '\\', '/');
  Note("FileExists:" + path.substr(path.rfind('/') + 1));
  return std::filesystem::exists(path) ? 1 : 0;
}

void RecordingHost::UpdateAfterSave(int first, int second) {
  Note("UpdateAfterSave:" + std::to_string(first) + "," + std::to_string(second));
}

const char* RecordingHost::GetDirectory(int number) {
  return Record("GetDirectory:" + std::to_string(number), directory.c_str());
}

void RecordingHost::SetStorage(IStorage* storage) {
  Note(storage == nullptr ? "SetStorage:null" : "SetStorage");
  if (!keepsStorage || storage == nullptr) return;
  kept_ = storage;
  kept_->AddRef();
}
