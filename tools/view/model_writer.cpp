// A binary glTF file: a header of 12 bytes, then two chunks, each with its length and its kind:
// the description in JSON, and the numbers of the meshes that it refers to. Little-endian, all
// lengths multiples of four.

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/view/ink.h"
#include "tools/view/mesh.h"
#include "tools/view/writers.h"

namespace kelview {
namespace {

using nlohmann::ordered_json;

// Numbers of the format.
constexpr int ComponentFloat = 5126;
constexpr int ComponentUnsigned = 5125;
constexpr int TargetPlaces = 34962;
constexpr int TargetCorners = 34963;
constexpr int ModeLines = 1;

// As parts of the picture's radius.
constexpr double StrongTube = 0.005;
constexpr double ThinTube = 0.0025;
constexpr double Ball = 0.014;
constexpr double SmallBall = 0.006;
constexpr std::size_t ManyDots = 500;

/// What is shorter, in units, has no direction in single precision.
constexpr double SmallestStroke = 1e-5;

/// Beyond these a unit would be lost in the single precision of the format, or in the programs
/// that read it; then the model is as large as the picture.
constexpr double SmallestUnit = 1e-6;
constexpr double LargestUnit = 1e6;

void PutUnsigned(std::string& bytes, std::uint32_t number) {
  for (const unsigned shift : {0U, 8U, 16U, 24U}) {
    bytes += static_cast<char>(number >> shift & 0xFFU);
  }
}

std::array<float, 3> Single(const CyVector& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

/// One channel of a colour, as light: files of this format do not keep what screens are sent.
double Light(std::string_view hex) {
  int byte = 0;
  std::from_chars(hex.data(), hex.data() + hex.size(), byte, 16);
  const double shown = byte / 255.0;
  const double light = shown <= 0.04045 ? shown / 12.92 : std::pow((shown + 0.055) / 1.055, 2.4);
  return std::nearbyint(light * 1e4) / 1e4;
}

class Model {
 public:
  explicit Model(const Picture& picture) : picture_(picture) {}

  std::string Bytes() {
    json_["asset"] = {{"version", "2.0"}, {"generator", "kelcalc"}};
    json_["scene"] = 0;
    ordered_json scene = ordered_json::object();
    if (picture_.empty) {
      scene["name"] = picture_.message;
    } else {
      DrawAll();
      scene["nodes"] = ordered_json::array({0});
    }
    const ordered_json told = Told();
    if (!told.empty()) scene["extras"] = {{"notDrawn", told}};
    json_["scenes"] = ordered_json::array({scene});
    return Packed();
  }

 private:
  ordered_json Value(const Thing& thing) const {
    ordered_json value = {{"type", thing.type}, {"value", thing.text}};
    if (!thing.note.empty()) value["note"] = thing.note;
    return value;
  }

  ordered_json Told() const {
    ordered_json told = ordered_json::array();
    for (const Thing& thing : picture_.things) {
      if (thing.drawn) continue;
      told.push_back(Value(thing));
      told.back()["name"] = thing.name;
    }
    return told;
  }

  void DrawAll() {
    for (const char* list : {"nodes", "meshes", "materials", "accessors", "bufferViews"}) {
      json_[list] = ordered_json::array();
    }
    json_["nodes"].push_back(Root());
    AddNode({{"name", "grid and axes"}, {"mesh", GridMesh()}});
    for (std::size_t i = 0; i < picture_.things.size(); ++i) {
      if (picture_.things[i].drawn) AddThing(static_cast<int>(i));
    }
    json_["buffers"].push_back({{"byteLength", numbers_.size()}});
  }

  /// Turns z upwards into y upwards, and brings the picture to its place in the world.
  ordered_json Root() const {
    const double half = std::sqrt(0.5);
    ordered_json root = {{"name", "picture"}, {"rotation", {-half, 0.0, 0.0, half}}};
    if (picture_.unit >= SmallestUnit && picture_.unit <= LargestUnit) {
      const CyVector& c = picture_.centre;
      root["translation"] = {c.x, c.z, 0.0 - c.y};
      root["scale"] = {picture_.unit, picture_.unit, picture_.unit};
    } else {
      root["extras"] = {{"unit", picture_.unit},
                        {"centre", {picture_.centre.x, picture_.centre.y, picture_.centre.z}}};
    }
    root["children"] = ordered_json::array();
    return root;
  }

  void AddNode(ordered_json node) {
    json_["nodes"][0]["children"].push_back(json_["nodes"].size());
    json_["nodes"].push_back(std::move(node));
  }

  /// A dot is one ball, shared by all dots of its ink; whatever else has a mesh of its own.
  void AddThing(int index) {
    const Thing& thing = picture_.things[static_cast<std::size_t>(index)];
    ordered_json node = {{"name", thing.name}, {"extras", Value(thing)}};
    Meshes meshes = StrokesOf(index);
    if (meshes.empty()) {
      node["mesh"] = BallMesh(thing.ink);
      node["translation"] = Single(thing.at);
    } else {
      node["mesh"] = PutMesh(thing.name, meshes);
    }
    AddNode(std::move(node));
  }

  /// By ink, and whether it is a face.
  using Meshes = std::map<std::pair<Ink, bool>, Mesh>;

  Meshes StrokesOf(int thing) {
    Meshes meshes;
    const auto [first, last] =
        std::equal_range(picture_.strokes.begin(), picture_.strokes.end(), thing, ByThing());
    for (auto stroke = first; stroke != last; ++stroke) {
      AddStroke(meshes[{stroke->ink, stroke->pen == Pen::Filled}], *stroke);
    }
    std::erase_if(meshes, [](const auto& entry) { return entry.second.corners.empty(); });
    if (meshes.empty()) return meshes;
    const auto [dot, end] =
        std::equal_range(picture_.dots.begin(), picture_.dots.end(), thing, ByThing());
    if (dot != end) meshes[{dot->ink, false}].AddBall(dot->at, BallRadius());
    return meshes;
  }

  /// Strokes and dots come in the order of their things; those of the grid stand at the end.
  struct ByThing {
    static unsigned Order(int thing) { return static_cast<unsigned>(thing); }
    bool operator()(const auto& part, int thing) const { return Order(part.thing) < Order(thing); }
    bool operator()(int thing, const auto& part) const { return Order(thing) < Order(part.thing); }
  };

  double BallRadius() const {
    return picture_.radius * (picture_.dots.size() > ManyDots ? SmallBall : Ball);
  }

  static double Extent(const std::vector<CyVector>& line) {
    double extent = 0.0;
    for (const CyVector& place : line) extent = std::max(extent, (place - line.front()).Mag());
    return extent;
  }

  void AddStroke(Mesh& mesh, const Stroke& stroke) const {
    if (Extent(stroke.line) < SmallestStroke) return;
    const double radius = picture_.radius * (stroke.pen == Pen::Thin ? ThinTube : StrongTube);
    if (stroke.pen == Pen::Filled) {
      mesh.AddFace(stroke.line);
    } else if (stroke.pen == Pen::Dashed) {
      mesh.AddDashes(stroke.line.front(), stroke.line.back(), radius, 6 * radius, stroke.arrow);
    } else {
      mesh.AddTube(stroke.line, radius, stroke.arrow);
    }
  }

  std::size_t GridMesh() {
    std::vector<CyVector> lines;
    Meshes axes;
    for (const Stroke& stroke : picture_.strokes) {
      if (stroke.thing != NoThing) continue;
      if (stroke.ink == Ink::Grid) {
        lines.insert(lines.end(), stroke.line.begin(), stroke.line.end());
      } else {
        AddStroke(axes[{stroke.ink, false}], stroke);
      }
    }
    ordered_json primitives = Primitives(axes);
    primitives.push_back({{"attributes", {{"POSITION", PutPlaces(lines, true)}}},
                          {"mode", ModeLines},
                          {"material", Material(Ink::Grid, false)}});
    return PutMesh("grid and axes", std::move(primitives));
  }

  std::size_t BallMesh(Ink ink) {
    const auto found = balls_.find(ink);
    if (found != balls_.end()) return found->second;
    Meshes meshes;
    meshes[{ink, false}].AddBall({}, BallRadius());
    return balls_[ink] = PutMesh(std::string("dot of a ") + Colours(ink).name, meshes);
  }

  ordered_json Primitives(const Meshes& meshes) {
    ordered_json primitives = ordered_json::array();
    for (const auto& [look, mesh] : meshes) {
      primitives.push_back({{"attributes",
                             {{"POSITION", PutPlaces(mesh.places, true)},
                              {"NORMAL", PutPlaces(mesh.normals, false)}}},
                            {"indices", PutCorners(mesh.corners)},
                            {"material", Material(look.first, look.second)}});
    }
    return primitives;
  }

  std::size_t PutMesh(const std::string& name, const Meshes& meshes) {
    return PutMesh(name, Primitives(meshes));
  }

  std::size_t PutMesh(const std::string& name, ordered_json primitives) {
    json_["meshes"].push_back({{"name", name}, {"primitives", std::move(primitives)}});
    return json_["meshes"].size() - 1;
  }

  std::size_t Material(Ink ink, bool face) {
    const auto [found, isNew] = materials_.try_emplace({ink, face}, materials_.size());
    if (!isNew) return found->second;
    const std::string_view colour = Colours(ink).light;
    ordered_json material = {{"name", std::string(Colours(ink).name) + (face ? " face" : "")},
                             {"pbrMetallicRoughness",
                              {{"baseColorFactor",
                                {Light(colour.substr(1, 2)), Light(colour.substr(3, 2)),
                                 Light(colour.substr(5, 2)), face ? 0.2 : 1.0}},
                               {"metallicFactor", 0.0},
                               {"roughnessFactor", 0.6}}}};
    if (face) {
      material["alphaMode"] = "BLEND";
      material["doubleSided"] = true;
    }
    json_["materials"].push_back(std::move(material));
    return found->second;
  }

  /// The number of a new piece of the numbers, which begins where they end now.
  std::size_t OpenView(std::size_t bytes, int target) {
    json_["bufferViews"].push_back({{"buffer", 0},
                                    {"byteOffset", numbers_.size()},
                                    {"byteLength", bytes},
                                    {"target", target}});
    return json_["bufferViews"].size() - 1;
  }

  std::size_t PutAccessor(ordered_json accessor) {
    json_["accessors"].push_back(std::move(accessor));
    return json_["accessors"].size() - 1;
  }

  std::size_t PutPlaces(const std::vector<CyVector>& places, bool bounded) {
    const std::size_t view = OpenView(places.size() * 12, TargetPlaces);
    std::array<float, 3> low;
    std::array<float, 3> high;
    low.fill(std::numeric_limits<float>::max());
    high.fill(std::numeric_limits<float>::lowest());
    for (const CyVector& place : places) {
      const std::array<float, 3> row = Single(place);
      for (std::size_t i = 0; i < 3; ++i) {
        low[i] = std::min(low[i], row[i]);
        high[i] = std::max(high[i], row[i]);
        PutUnsigned(numbers_, std::bit_cast<std::uint32_t>(row[i]));
      }
    }
    ordered_json accessor = {{"bufferView", view},
                             {"componentType", ComponentFloat},
                             {"count", places.size()},
                             {"type", "VEC3"}};
    if (bounded) {
      accessor["min"] = low;
      accessor["max"] = high;
    }
    return PutAccessor(std::move(accessor));
  }

  std::size_t PutCorners(const std::vector<std::uint32_t>& corners) {
    const std::size_t view = OpenView(corners.size() * 4, TargetCorners);
    for (const std::uint32_t corner : corners) PutUnsigned(numbers_, corner);
    return PutAccessor({{"bufferView", view},
                        {"componentType", ComponentUnsigned},
                        {"count", corners.size()},
                        {"type", "SCALAR"}});
  }

  std::string Packed() const {
    std::string json = json_.dump();
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const std::size_t size = 12 + 8 + json.size() + (numbers_.empty() ? 0 : 8 + numbers_.size());
    std::string bytes = "glTF";
    PutUnsigned(bytes, 2);
    PutUnsigned(bytes, static_cast<std::uint32_t>(size));
    PutUnsigned(bytes, static_cast<std::uint32_t>(json.size()));
    bytes += "JSON";
    bytes += json;
    if (numbers_.empty()) return bytes;
    PutUnsigned(bytes, static_cast<std::uint32_t>(numbers_.size()));
    bytes.append("BIN\0", 4);
    return bytes += numbers_;
  }

  const Picture& picture_;
  ordered_json json_;
  std::string numbers_;
  std::map<std::pair<Ink, bool>, std::size_t> materials_;
  std::map<Ink, std::size_t> balls_;
};

}  // namespace

std::string WriteModel(const Picture& picture) { return Model(picture).Bytes(); }

}  // namespace kelview
