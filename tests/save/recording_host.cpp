#include "tests/save/recording_host.h"

#include <sys/stat.h>

#include <cstring>
#include <cwchar>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "platform/path.h"
#include "platform/window.h"
#include "tools/compound_check/compound_checker.h"

namespace {

const std::string Title = "less than a sector";
const std::string Meshes(600000, 'm');  // more than a piece of the file
constexpr unsigned char SceneClass[] = {0x91, 0x0C, 0x3E, 0x5A, 0x7D, 0x2B, 0x16, 0x4F,
                                        0x8C, 0x4A, 0xD0, 0x7E, 0x93, 0xB1, 0xF2, 0x58};

}  // namespace

bool RecordingHost::IsWhole(const std::string& path) {
  const compound::Findings findings = compound::CheckFile(path);
  std::ifstream file(path, std::ios::binary);
  char header[32] = "";
  file.read(header, sizeof header);
  const auto holds = [&](const char16_t* name, const std::string& bytes) {
    const compound::Entry* entry = findings.Find(name);
    return entry != nullptr && compound::Contents(file, *entry) == bytes;
  };
  return findings.Text().empty() && header[30] == 12 && findings.entries.size() == 3 &&
         std::memcmp(findings.entries[0].classId.data(), SceneClass, sizeof SceneClass) == 0 &&
         holds(u"Title", Title) && holds(u"Meshes", Meshes);
}

void RecordingHost::Note(const char* call, std::initializer_list<int> numbers) {
  if (!calls.empty()) calls += ' ';
  calls += call;
  char separator = ':';
  for (const int number : numbers) {
    (calls += std::exchange(separator, ',')) += std::to_string(number);  // too short for the heap
  }
  const std::size_t length = calls.size();
  if (SaveToFileDLL("nested", 1, 0, 0) != 1 || calls.size() != length) calls += "[nested save]";
  if (KelCurrentCursor() != 32514) calls += "[cursor]";
  if (throwing == call) throw std::runtime_error(call);
}

// When the outcome is reported only the reference that the host took for itself may be left.
void RecordingHost::NoteOutcome(const char* call) {
  Note(call);
  if (kept == nullptr) return;
  kept->AddRef();
  if (kept->Release() != 1) calls += "[storage held]";
}

int RecordingHost::Write(const char* writer, const wchar_t* name, const std::string& bytes) {
  Note(writer);
  IStream* stream = nullptr;
  const DWORD mode = STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE;
  if (failing == writer || FAILED(storage_->CreateStream(name, mode, 0, 0, &stream))) return -1;
  const auto size = static_cast<ULONG>(bytes.size());
  ULONG written = 0;
  const bool done = SUCCEEDED(stream->Write(bytes.data(), size, &written)) && written == size;
  stream->Release();
  return done ? 0 : 1;
}

int RecordingHost::SaveScene(void* scene) {
  return Write(scene == this ? "SaveScene" : "[handle]", L"Title", Title);
}

int RecordingHost::SaveSection4() { return Write("SaveSection4", L"Meshes", Meshes); }

int RecordingHost::FileExists(const char* fileName) {
  const NativePath path(fileName);
  struct stat status;
  Note("FileExists:");
  calls += std::strrchr(path.Text(), '/') + 1;
  return stat(path.Text(), &status) == 0 ? 1 : 0;
}

void* RecordingHost::OpenScene(const wchar_t* name, int code, int sceneArgument) {
  Note(std::wcscmp(name, L"Scene") == 0 ? "OpenScene" : "?", {code, sceneArgument});
  return this;
}

void RecordingHost::SetStorage(IStorage* storage) {
  Note(storage == nullptr ? "SetStorage:null" : "SetStorage");
  storage_ = storage;
  if (!keepsStorage || storage == nullptr) return;
  kept.reset(storage);
  kept->AddRef();
}
