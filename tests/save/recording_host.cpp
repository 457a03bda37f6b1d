#include "tests/save/recording_host.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>

#include "platform/window.h"

namespace fs = std::filesystem;

namespace {

int SceneHandle;  // only its address matters

std::string Number(int value) {
  std::ostringstream text;
  text << std::hex << value;
  return text.str();
}

std::string FileName(const std::string& path) { return path.substr(path.find_last_of("\\/") + 1); }

}  // namespace

void RecordingHost::Record(const std::string& call) {
  if (!calls.empty()) calls += ' ';
  calls += call;
  const std::string before = calls;
  if (SaveToFileDLL("nested", 1, 0, 0) != 1 || calls != before) calls += "[nested save]";
  if (KelCurrentCursor() != 32514) calls += "[cursor]";
  if (throwing == call) throw std::runtime_error(call);
}

// When the outcome is reported only the reference that the host took for itself may be left.
void RecordingHost::RecordOutcome(const std::string& call) {
  Record(call);
  if (kept_ == nullptr) return;
  kept_->AddRef();
  if (kept_->Release() != 1) calls += "[storage held]";
}

int RecordingHost::Write(const std::string& writer) {
  Record(writer);
  return failing == writer ? -1 : 0;
}

ULONG RecordingHost::ReleaseKept() {
  IStorage* storage = kept_;
  kept_ = nullptr;
  return storage == nullptr ? 0 : storage->Release();
}

int RecordingHost::SaveScene(void* scene) {
  return Write(scene == &SceneHandle ? "SaveScene" : "SaveScene[handle]");
}

bool RecordingHost::UseAlternateBackupName() {
  Record("UseAlternateBackupName");
  return alternateName;
}

void* RecordingHost::OpenScene(const wchar_t* name, int code, int sceneArgument) {
  const std::wstring wide(name);
  std::string narrow;
  std::transform(wide.begin(), wide.end(), std::back_inserter(narrow),
                 [](wchar_t character) { return static_cast<char>(character); });
  Record("OpenScene(" + narrow + "," + Number(code) + "," + Number(sceneArgument) + ")");
  return &SceneHandle;
}

int RecordingHost::FileExists(const char* fileName) {
  Record("FileExists(" + FileName(fileName) + ")");
  std::string path(fileName);
  std::replace(path.begin(), path.end(), '\\', '/');
  return fs::exists(path) ? 1 : 0;
}

void RecordingHost::UpdateAfterSave(int first, int second) {
  Record("UpdateAfterSave(" + Number(first) + "," + Number(second) + ")");
}

int RecordingHost::NeedsPrepareSave() {
  Record("NeedsPrepareSave");
  return needsPrepare;
}

const char* RecordingHost::GetDirectory(int number) {
  Record("GetDirectory(" + std::to_string(number) + ")");
  return directory.c_str();
}

void RecordingHost::RunAfterSaveStep(int step) { Record("RunAfterSaveStep(" + Number(step) + ")"); }

int RecordingHost::HasAfterSaveSteps() {
  Record("HasAfterSaveSteps");
  return hasAfterSteps;
}

void RecordingHost::SetStorage(IStorage* storage) {
  Record(storage == nullptr ? "SetStorage(null)" : "SetStorage");
  if (!keepsStorage || storage == nullptr) return;
  kept_ = storage;
  kept_->AddRef();
}

int RecordingHost::WantsBackup() {
  Record("WantsBackup");
  return wantsBackup;
}

void RecordingHost::SaveFailed() { RecordOutcome("SaveFailed"); }

void RecordingHost::AnnounceSection(const char* name) {
  Record("AnnounceSection(" + std::string(name) + ")");
}

void RecordingHost::MarkSaved() { RecordOutcome("MarkSaved"); }

bool RecordingHost::SaveSection5First() {
  Record("SaveSection5First");
  return section5First;
}

Folder::Folder() {
  std::string name = (fs::temp_directory_path() / "kelsave-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
  root_ = name;
}

Folder::~Folder() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

void Folder::Put(const std::string& name, const std::string& text, bool readOnly) const {
  std::ofstream(root_ / name) << text;
  if (readOnly) fs::permissions(root_ / name, static_cast<fs::perms>(0444));
}

std::string Folder::List() const {
  std::set<std::string> lines;
  for (const fs::directory_entry& entry : fs::directory_iterator(root_)) {
    const std::string name = entry.path().filename().string();
    if (entry.is_directory()) {
      lines.insert(name + "/");
      continue;
    }
    std::ifstream file(entry.path(), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.compare(0, 4, "\xD0\xCF\x11\xE0") == 0) text = "new";
    const bool readOnly = (entry.status().permissions() & fs::perms::owner_write) == fs::perms{};
    std::string line = name;
    line += "=";
    line += text;
    if (readOnly) line += "!";
    lines.insert(line);
  }
  std::string list;
  for (const std::string& line : lines) {
    if (!list.empty()) list += ' ';
    list += line;
  }
  return list;
}
