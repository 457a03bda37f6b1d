#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Mesh {
  std::string name;
  std::uint32_t material;                // index into Scene::materials
  std::vector<float> points;             // x, y, z of each corner
  std::vector<std::uint32_t> triangles;  // three corners each
};

struct Material {
  std::string name;
  float red;
  float green;
  float blue;
};

/// What the example saves.
struct Scene {
  std::string title;
  std::vector<Mesh> meshes;
  std::vector<Material> materials;
  std::vector<std::string> layers;
};

/// A floor, a pyramid and a box.
Scene MakeScene();
