/// A small host, made with the kit: saves a scene, loads it again and compares, and shows what is
/// left when a writer fails and when the process stops in the middle of a save.
///   scene_host FOLDER        leaves FOLDER/scene.kel; status 0 when all goes as it should
///   scene_host FOLDER crash  stops in the middle of a save; run it again without "crash" then

#include <kelsave_kit.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Mesh {
  std::string name;
  std::vector<float> points;             // x, y, z of each corner
  std::vector<std::uint32_t> triangles;  // three corners each

  bool operator==(const Mesh& b) const {
    return name == b.name && points == b.points && triangles == b.triangles;
  }
};

struct Scene {
  std::string title;
  std::vector<Mesh> meshes;  // in the order in which a file holds them: shorter names first
};

Scene MakeScene() {
  return {"Still life",
          {{"Floor", {-5, -5, 0, 5, -5, 0, 5, 5, 0, -5, 5, 0}, {0, 1, 2, 0, 2, 3}},
           {"Pyramid",
            {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, 0, 0, 2},
            {0, 1, 4, 1, 2, 4, 2, 3, 4, 3, 0, 4, 0, 2, 1, 0, 3, 2}}}};
}

/// The file gets the streams Title, Meshes/NAME/Points and Meshes/NAME/Triangles.
class SceneSaver : public kel::Saver {
 public:
  explicit SceneSaver(const Scene& scene) : scene_(scene) {}

  std::function<void()> trouble = [] {};  // what happens to the writer of section 5

 private:
  void WriteScene(IStorage& file) override {
    kel::WriteAll(*kel::CreateStream(file, L"Title"), scene_.title);
  }

  void WriteSection5(IStorage& file) override {
    const kel::Storage meshes = kel::CreateStorage(file, L"Meshes");
    for (const Mesh& mesh : scene_.meshes) {
      const kel::Storage folder = kel::CreateStorage(*meshes, kel::Wide(mesh.name));
      kel::WriteAll(*kel::CreateStream(*folder, L"Points"), mesh.points);
      trouble();
      kel::WriteAll(*kel::CreateStream(*folder, L"Triangles"), mesh.triangles);
    }
  }

  const Scene& scene_;
};

Scene Load(const std::string& file) {
  const kel::Storage root = kel::OpenScene(file);
  Scene scene;
  scene.title = kel::ReadText(*kel::OpenStream(*root, L"Title"));
  const kel::Storage meshes = kel::OpenStorage(*root, L"Meshes");
  for (const kel::Element& element : kel::List(*meshes)) {
    const kel::Storage mesh = kel::OpenStorage(*meshes, element.name);
    scene.meshes.push_back({kel::Narrow(element.name),
                            kel::ReadAll<float>(*kel::OpenStream(*mesh, L"Points")),
                            kel::ReadAll<std::uint32_t>(*kel::OpenStream(*mesh, L"Triangles"))});
  }
  return scene;
}

bool Save(const std::string& heading, SceneSaver& saver, const std::string& file) {
  const kel::SaveResult saved = kel::SaveScene(saver, file);
  std::cout << heading << ": " << (saved ? "saved" : "not saved: " + saved.reason) << "\n";
  return saved.outcome == kel::SaveOutcome::Saved;
}

/// What a host does before it opens a file, and after a save that failed.
bool BringBack(const SceneSaver& saver, const std::string& file) {
  const kel::RestoreResult result = kel::RestoreBackup(saver, file);
  if (!result) std::cout << "  nothing to open: " << result.reason << "\n";
  if (result.outcome == kel::RestoreOutcome::Restored) std::cout << "  the backup is back\n";
  return result.outcome != kel::RestoreOutcome::NotRestored;
}

bool Run(const std::string& file, bool crash) {
  const Scene scene = MakeScene();
  SceneSaver saver(scene);
  if (crash) {
    saver.trouble = [] { std::_Exit(3); };
    return Save("A save that never ends", saver, file);
  }
  std::cout << "Opening " << file << "\n";
  if (BringBack(saver, file)) std::cout << "  it holds " << Load(file).title << "\n";
  bool good = Save("A save", saver, file);
  good = Save("Another, which keeps the old version", saver, file) && good;
  saver.trouble = [] { throw std::runtime_error("this mesh has no triangles"); };
  good = !Save("A save with a writer that fails", saver, file) && good;
  good = BringBack(saver, file) && good;
  const Scene loaded = Load(file);
  const bool same = loaded.title == scene.title && loaded.meshes == scene.meshes;
  std::cout << "Loaded again: " << (same ? "the same" : "another") << " scene\n";
  return good && same;
}

}  // namespace

int main(int count, char** arguments) {
  const bool crash = count == 3 && std::string(arguments[2]) == "crash";
  if (count != 2 && !crash) {
    std::cerr << "usage: scene_host FOLDER [crash]\n";
    return 2;
  }
  try {
    return Run(std::string(arguments[1]) + "/scene.kel", crash) ? 0 : 1;
  } catch (const std::exception& problem) {
    std::cerr << "scene_host: " << problem.what() << "\n";
    return 1;
  }
}
