#pragma once

#include <cstdint>
#include <vector>

#include "geometry/vector.h"

namespace kelview {

/// Triangles with a direction outwards at each corner.
struct Mesh {
  std::vector<CyVector> places;
  std::vector<CyVector> normals;       // of length 1, one for each place
  std::vector<std::uint32_t> corners;  // three for each triangle, anticlockwise from outside

  void AddBall(const CyVector& middle, double radius);

  /// Along `line`, whose neighbours differ; with an arrow's head at its end when `arrow` is set.
  void AddTube(std::vector<CyVector> line, double radius, bool arrow);

  /// Pieces of a line: for `length` a tube, for the same length nothing, and so on.
  void AddDashes(const CyVector& from, const CyVector& to, double radius, double length,
                 bool arrow);

  /// The flat face inside `line`, as a fan around its last place.
  void AddFace(const std::vector<CyVector>& line);

 private:
  std::uint32_t AddRing(const CyVector& middle, const CyVector& along, const CyVector& side,
                        double radius, double lean);
  void JoinRings(std::uint32_t first, std::uint32_t second);
  void AddCone(const CyVector& base, const CyVector& tip, double radius);
};

}  // namespace kelview
