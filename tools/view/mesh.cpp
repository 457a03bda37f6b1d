#include "tools/view/mesh.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kelview {
namespace {

constexpr int Sides = 10;  // of a tube
constexpr int Bands = 8;   // of a ball, from pole to pole
constexpr double Pi = 3.141592653589793;
constexpr double HeadLength = 7.0;  // of an arrow, in radii of its shaft
constexpr double HeadWidth = 2.8;

CyVector Unit(CyVector v) {
  const double length = v.Mag();
  return length > 0.0 ? v / length : v;
}

}  // namespace

/// A ring of corners around `middle`; their normals lean by `lean` towards `along`.
std::uint32_t Mesh::AddRing(const CyVector& middle, const CyVector& along, const CyVector& side,
                            double radius, double lean) {
  const auto first = static_cast<std::uint32_t>(places.size());
  const CyVector other = Cross(along, side);
  for (int i = 0; i < Sides; ++i) {
    const double angle = 2.0 * Pi * i / Sides;
    const CyVector out = side * std::cos(angle) + other * std::sin(angle);
    places.push_back(middle + out * radius);
    normals.push_back(Unit(out + along * lean));
  }
  return first;
}

void Mesh::JoinRings(std::uint32_t first, std::uint32_t second) {
  for (std::uint32_t i = 0; i < Sides; ++i) {
    const std::uint32_t next = (i + 1) % Sides;
    for (const std::uint32_t corner :
         {first + i, first + next, second + next, first + i, second + next, second + i}) {
      corners.push_back(corner);
    }
  }
}

void Mesh::AddBall(const CyVector& middle, double radius) {
  constexpr double SmallestRing = 1e-3;  // a pole: its triangles keep an area of their own
  std::uint32_t last = 0;
  for (int band = 0; band <= Bands; ++band) {
    const double angle = Pi * band / Bands;
    const double width = std::max(std::sin(angle), SmallestRing);
    const double height = -std::cos(angle);
    const std::uint32_t ring = AddRing(middle + CyVector(0, 0, height * radius), {0, 0, 1},
                                       {1, 0, 0}, width * radius, height / width);
    if (band > 0) JoinRings(last, ring);
    last = ring;
  }
}

void Mesh::AddCone(const CyVector& base, const CyVector& tip, double radius) {
  const CyVector along = Unit(tip - base);
  const CyVector side = PerpVec(along);
  const double lean = radius / (tip - base).Mag();
  JoinRings(AddRing(base, along, side, radius, lean),
            AddRing(tip, along, side, radius * 1e-3, lean));
  JoinRings(AddRing(base, along, side, radius * 1e-3, -1e3),
            AddRing(base, along, side, radius, -1e3));
}

void Mesh::AddTube(std::vector<CyVector> line, double radius, bool arrow) {
  if (arrow) {
    const CyVector tip = line.back();
    const CyVector way = tip - line[line.size() - 2];
    const double head = HeadLength * radius;
    // A line of many short pieces loses those that the head covers.
    while (line.size() > 2 && (tip - line[line.size() - 2]).Mag() < head) line.pop_back();
    const CyVector back = tip - line[line.size() - 2];
    const double length = std::min(head, back.Mag() * 0.8);
    line.back() = tip - Unit(line.size() > 2 ? back : way) * length;
    AddCone(line.back(), tip, HeadWidth * length / HeadLength);
    radius = std::min(radius, length / HeadLength);
  }
  CyVector side = PerpVec(Unit(line[1] - line[0]));
  std::uint32_t last = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const CyVector& before = line[i == 0 ? 0 : i - 1];
    const CyVector& after = line[std::min(i + 1, line.size() - 1)];
    const CyVector along = Unit(after - before);
    side = Unit(side - along * Dot(side, along));
    const std::uint32_t ring = AddRing(line[i], along, side, radius, 0.0);
    if (i > 0) JoinRings(last, ring);
    last = ring;
  }
}

void Mesh::AddDashes(const CyVector& from, const CyVector& to, double radius, double length,
                     bool arrow) {
  const CyVector way = to - from;
  const int pieces = std::max(1, static_cast<int>(way.Mag() / length / 2.0)) * 2 - 1;
  const auto end = [&](int piece) { return from + way * piece / pieces; };
  for (int i = 0; i < pieces; i += 2) {
    AddTube({end(i), end(i + 1)}, radius, arrow && i + 1 == pieces);
  }
}

void Mesh::AddFace(const std::vector<CyVector>& line) {
  const auto first = static_cast<std::uint32_t>(places.size());
  const auto count = static_cast<std::uint32_t>(line.size());
  CyVector normal;
  for (std::size_t i = 0; i + 2 < line.size(); ++i) {
    normal = normal + Cross(line[i] - line.back(), line[i + 1] - line.back());
  }
  normal = Unit(normal);
  if (normal.Mag() == 0.0) return;
  for (const CyVector& place : line) {
    places.push_back(place);
    normals.push_back(normal);
  }
  for (std::uint32_t i = 0; i + 2 < count; ++i) {
    corners.insert(corners.end(), {first + count - 1, first + i, first + i + 1});
  }
}

}  // namespace kelview
