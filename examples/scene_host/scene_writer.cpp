#include "examples/scene_host/scene_writer.h"

#include <cstddef>
#include <iostream>

namespace {

constexpr DWORD CreateNew = STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE;

/// All bytes or failure: a write that is accepted only in part is a full disk.
bool WriteBytes(IStream* stream, const void* bytes, std::size_t size) {
  ULONG written = 0;
  return SUCCEEDED(stream->Write(bytes, static_cast<ULONG>(size), &written)) && written == size;
}

template <typename T>
bool WriteArray(IStream* stream, const std::vector<T>& values) {
  return WriteBytes(stream, values.data(), values.size() * sizeof(T));
}

/// Each text followed by a zero byte.
bool WriteTexts(IStream* stream, const std::vector<std::string>& texts) {
  for (const std::string& text : texts) {
    if (!WriteBytes(stream, text.c_str(), text.size() + 1)) return false;
  }
  return true;
}

/// Makes the stream `name` in `folder` and lets `fill` write it; true when all of it succeeded.
template <typename Fill>
bool WriteStream(IStorage* folder, const std::wstring& name, Fill fill) {
  IStream* stream = nullptr;
  if (FAILED(folder->CreateStream(name.c_str(), CreateNew, 0, 0, &stream))) return false;
  const bool written = fill(stream);
  stream->Release();
  return written;
}

bool WriteMesh(IStorage* folder, const Mesh& mesh) {
  const std::wstring name(mesh.name.begin(), mesh.name.end());
  return WriteStream(folder, name, [&mesh](IStream* stream) {
    return WriteBytes(stream, &mesh.material, sizeof mesh.material) &&
           WriteArray(stream, mesh.points) && WriteArray(stream, mesh.triangles);
  });
}

}  // namespace

SceneWriter::SceneWriter(const Scene& scene, const std::filesystem::path& backupFolder)
    : scene_(scene), backupFolder_(backupFolder.string()) {}

/// Prints and passes on how a writer ended.
int SceneWriter::Finish(const std::string& writer, bool written) {
  const bool failed = !written || failing_ == writer;
  std::cout << "  " << writer << (failed ? ": failed\n" : ": written\n");
  return failed ? 1 : 0;
}

int SceneWriter::SaveScene(void* scene) {
  if (storage_ == nullptr) return Finish("SaveScene", false);
  const std::string& title = static_cast<Scene*>(scene)->title;
  return Finish("SaveScene", WriteStream(storage_, L"Title", [&title](IStream* stream) {
                  return WriteTexts(stream, {title});
                }));
}

int SceneWriter::SaveSection5() {
  IStorage* folder = nullptr;
  if (FAILED(storage_->CreateStorage(L"Meshes", CreateNew, 0, 0, &folder))) {
    return Finish("SaveSection5", false);
  }
  bool written = true;
  for (const Mesh& mesh : scene_.meshes) written = written && WriteMesh(folder, mesh);
  folder->Release();
  return Finish("SaveSection5", written);
}

int SceneWriter::SaveSection6() {
  return Finish("SaveSection6", WriteStream(storage_, L"Materials", [this](IStream* stream) {
                  bool written = true;
                  for (const Material& m : scene_.materials) {
                    const std::vector<float> colour = {m.red, m.green, m.blue};
                    written = written && WriteTexts(stream, {m.name}) && WriteArray(stream, colour);
                  }
                  return written;
                }));
}

int SceneWriter::SaveSection4() {
  return Finish("SaveSection4", WriteStream(storage_, L"Layers", [this](IStream* stream) {
                  return WriteTexts(stream, scene_.layers);
                }));
}

// This scene needs only four of the seven writers; the others have nothing to do.
int SceneWriter::SaveSection3() { return Finish("SaveSection3", true); }
int SceneWriter::SaveSection2() { return Finish("SaveSection2", true); }

/// The last writer: after it nobody looks at a result any more. So it commits, and what the disk
/// does not take turns up here.
int SceneWriter::SaveSection1() {
  const bool written = WriteStream(
      storage_, L"Sections", [this](IStream* stream) { return WriteTexts(stream, sections_); });
  return Finish("SaveSection1", written && SUCCEEDED(storage_->Commit(STGC_DEFAULT)));
}

void* SceneWriter::OpenScene(const wchar_t*, int, int) { return &scene_; }

bool SceneWriter::SaveSection5First() { return true; }

void SceneWriter::AnnounceSection(const char* name) {
  sections_.emplace_back(name);
  std::cout << "  now: " << name << "\n";
}

int SceneWriter::FileExists(const char* fileName) {
  return std::filesystem::exists(fileName) ? 1 : 0;
}

int SceneWriter::WantsBackup() { return 1; }

const char* SceneWriter::GetDirectory(int) { return backupFolder_.c_str(); }

bool SceneWriter::UseAlternateBackupName() { return false; }

int SceneWriter::NeedsPrepareSave() { return 1; }

void SceneWriter::PrepareSave() {
  sections_ = {"Meshes", "Materials"};
  std::cout << "  preparing\n";
}

void SceneWriter::SetStorage(IStorage* storage) {
  storage_ = storage;
  std::cout << "  the new file is open\n";
}

void SceneWriter::SaveFailed() { std::cout << "  told: the save failed, the new file is gone\n"; }

void SceneWriter::MarkSaved() { std::cout << "  told: the scene is saved\n"; }

void SceneWriter::UpdateAfterSave(int, int) { std::cout << "  updating the views\n"; }

int SceneWriter::HasAfterSaveSteps() { return 1; }

void SceneWriter::RunAfterSaveStep(int step) {
  std::cout << "  step " << step << " after the save\n";
}
