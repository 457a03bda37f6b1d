/// The geometry library beside Eigen, GLM and Imath: the same numbers, the same compiler and
/// options, one run. Operands come from small arrays, so that nothing is known beforehand and all
/// of it stays in the first-level cache; the 100,000 points do not.

#define GLM_ENABLE_EXPERIMENTAL
#include <Imath/ImathMatrix.h>
#include <Imath/ImathMatrixAlgo.h>
#include <Imath/ImathQuat.h>
#include <benchmark/benchmark.h>

#include <Eigen/Geometry>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/quaternion.hpp>
#include <random>
#include <string>
#include <vector>

#include "bench/geometry/ratio_reporter.h"
#include "geometry/matrix.h"
#include "geometry/quaternion.h"
#include "geometry/rotation.h"

namespace {

constexpr std::size_t Operands = 64;
constexpr std::size_t Points = 100'000;

/// The operands for one library, made from the same numbers.
template <class Matrix, class Vector, class Quaternion, class Rotation>
struct Set {
  std::vector<Matrix> rigid, general;
  std::vector<Vector> points;
  std::vector<Quaternion> quaternions;
  std::vector<Rotation> rotations;
};

using EigenMatrix = Eigen::Transform<double, 3, Eigen::Affine>;
using EigenRotation = Eigen::AngleAxisd;
struct AxisAngle {  // of the libraries that have no record for it
  double x, y, z, angle;
};

struct Sets {
  Set<CyMatrix, CyVector, CyQuaternion, CyRotation> kel;
  Set<EigenMatrix, Eigen::Vector3d, Eigen::Quaterniond, EigenRotation> eigen;
  Set<glm::dmat4, glm::dvec3, glm::dquat, AxisAngle> glm;
  Set<Imath::M44d, Imath::V3d, Imath::Quatd, AxisAngle> imath;

  Sets();

 private:
  void Add(const CyMatrix& m, bool isRigid);
};

void Sets::Add(const CyMatrix& m, bool isRigid) {
  EigenMatrix e = EigenMatrix::Identity();
  glm::dmat4 g(1.0);
  Imath::M44d i;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 4; ++c) {
      e(r, c) = m.m[r][c];
      g[c][r] = m.m[r][c];
      i[c][r] = m.m[r][c];  // Imath multiplies row vectors
    }
  }
  (isRigid ? kel.rigid : kel.general).push_back(m);
  (isRigid ? eigen.rigid : eigen.general).push_back(e);
  (isRigid ? glm.rigid : glm.general).push_back(g);
  (isRigid ? imath.rigid : imath.general).push_back(i);
}

Sets::Sets() {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> number(-2.0, 2.0);
  for (std::size_t n = 0; n < Operands; ++n) {
    CyVector axis(number(random), number(random), number(random) + 3.0);
    axis.Normalize();
    const double degrees = 80.0 + 40.0 * number(random);
    const double radians = degrees * 0.017453292519943295;
    CyMatrix rigid;
    rigid.RotVec(axis, degrees);
    rigid.SetTrans(number(random), number(random), number(random));
    Add(rigid, true);
    CyMatrix general;
    for (int e = 0; e < 12; ++e)
      general.SetElem(e / 4, e % 4, number(random) + (e % 5 ? 0.0 : 5.0));
    Add(general, false);
    const CyQuaternion q{CyRotation(axis, degrees)};
    kel.quaternions.push_back(q);
    eigen.quaternions.emplace_back(q.w, q.v.x, q.v.y, q.v.z);
    glm.quaternions.emplace_back(q.w, q.v.x, q.v.y, q.v.z);
    imath.quaternions.emplace_back(q.w, q.v.x, q.v.y, q.v.z);
    kel.rotations.emplace_back(axis, degrees);
    eigen.rotations.emplace_back(radians, Eigen::Vector3d(axis.x, axis.y, axis.z));
    glm.rotations.push_back({axis.x, axis.y, axis.z, radians});
    imath.rotations.push_back({axis.x, axis.y, axis.z, radians});
  }
  for (std::size_t n = 0; n < Points; ++n) {
    const CyVector p(number(random), number(random), number(random));
    kel.points.push_back(p);
    eigen.points.emplace_back(p.x, p.y, p.z);
    glm.points.emplace_back(p.x, p.y, p.z);
    imath.points.emplace_back(p.x, p.y, p.z);
  }
}

const Sets& All() {
  static const Sets sets;
  return sets;
}

/// Registers one benchmark that calls `operation` with the numbers 0 to Operands - 1 in turn.
template <class Operation>
void Each(const std::string& name, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [operation](benchmark::State& state) {
    std::size_t n = 0;
    for (auto _ : state) {
      auto result = operation(n, (n + 7) % Operands);
      benchmark::DoNotOptimize(result);
      n = (n + 1) % Operands;
    }
  });
}

/// Registers one benchmark that applies `operation` to every point and stores the results.
template <class Vector, class Operation>
void EachPoint(const std::string& name, const std::vector<Vector>& points, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [&points, operation](benchmark::State& state) {
    std::vector<Vector> results(points.size());
    for (auto _ : state) {
      for (std::size_t n = 0; n < points.size(); ++n) results[n] = operation(points[n]);
      benchmark::DoNotOptimize(results.data());
      benchmark::ClobberMemory();
    }
  });
}

void RegisterProducts() {
  static const Sets& s = All();
  Each("ProductGeneral/kel", [](auto a, auto b) { return s.kel.general[a] * s.kel.general[b]; });
  Each("ProductGeneral/eigen",
       [](auto a, auto b) { return EigenMatrix(s.eigen.general[a] * s.eigen.general[b]); });
  Each("ProductGeneral/glm", [](auto a, auto b) { return s.glm.general[a] * s.glm.general[b]; });
  Each("ProductGeneral/imath",
       [](auto a, auto b) { return s.imath.general[b] * s.imath.general[a]; });
  static const CyMatrix moved = [] {
    CyMatrix m;
    m.SetTrans(1, 2, 3);
    return m;
  }();
  static const EigenMatrix movedEigen(Eigen::Translation3d(1, 2, 3));
  static const glm::dmat4 movedGlm(glm::dvec4(1, 0, 0, 0), glm::dvec4(0, 1, 0, 0),
                                   glm::dvec4(0, 0, 1, 0), glm::dvec4(1, 2, 3, 1));
  static const Imath::M44d movedImath(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1);
  Each("ProductWithTranslation/kel", [](auto a, auto) { return s.kel.rigid[a] * moved; });
  Each("ProductWithTranslation/eigen",
       [](auto a, auto) { return EigenMatrix(s.eigen.rigid[a] * movedEigen); });
  Each("ProductWithTranslation/glm", [](auto a, auto) { return s.glm.rigid[a] * movedGlm; });
  Each("ProductWithTranslation/imath", [](auto a, auto) { return movedImath * s.imath.rigid[a]; });
  Each("QuaternionProduct/kel",
       [](auto a, auto b) { return s.kel.quaternions[a] * s.kel.quaternions[b]; });
  Each("QuaternionProduct/eigen", [](auto a, auto b) {
    return Eigen::Quaterniond(s.eigen.quaternions[a] * s.eigen.quaternions[b]);
  });
  Each("QuaternionProduct/glm",
       [](auto a, auto b) { return s.glm.quaternions[a] * s.glm.quaternions[b]; });
  Each("QuaternionProduct/imath",
       [](auto a, auto b) { return s.imath.quaternions[a] * s.imath.quaternions[b]; });
}

void RegisterInverses() {
  static const Sets& s = All();
  Each("InverseRigid/kel", [](auto a, auto) { return s.kel.rigid[a].Inverse(); });
  Each("InverseRigid/eigen",
       [](auto a, auto) { return EigenMatrix(s.eigen.rigid[a].inverse(Eigen::Isometry)); });
  Each("InverseRigid/glm", [](auto a, auto) { return glm::affineInverse(s.glm.rigid[a]); });
  Each("InverseRigid/imath", [](auto a, auto) { return s.imath.rigid[a].inverse(); });
  Each("InverseGeneral/kel", [](auto a, auto) { return s.kel.general[a].Inverse(); });
  Each("InverseGeneral/eigen",
       [](auto a, auto) { return EigenMatrix(s.eigen.general[a].inverse(Eigen::Affine)); });
  Each("InverseGeneral/glm", [](auto a, auto) { return glm::affineInverse(s.glm.general[a]); });
  Each("InverseGeneral/imath", [](auto a, auto) { return s.imath.general[a].inverse(); });
  Each("InverseGaussJordan/kel", [](auto a, auto) { return s.kel.general[a].Inverse(); });
  Each("InverseGaussJordan/imath", [](auto a, auto) { return s.imath.general[a].gjInverse(); });
}

void RegisterTransforms() {
  static const Sets& s = All();
  const auto glmPoint = [](const glm::dmat4& m, const glm::dvec3& p) {
    return glm::dvec3(m * glm::dvec4(p, 1.0));
  };
  const auto imathPoint = [](const Imath::M44d& m, const Imath::V3d& p) {
    Imath::V3d result;
    m.multVecMatrix(p, result);
    return result;
  };
  Each("TransformPoint/kel",
       [](auto a, auto b) { return s.kel.rigid[a].XformPoint(s.kel.points[b]); });
  Each("TransformPoint/eigen",
       [](auto a, auto b) { return Eigen::Vector3d(s.eigen.rigid[a] * s.eigen.points[b]); });
  Each("TransformPoint/glm",
       [=](auto a, auto b) { return glmPoint(s.glm.rigid[a], s.glm.points[b]); });
  Each("TransformPoint/imath",
       [=](auto a, auto b) { return imathPoint(s.imath.rigid[a], s.imath.points[b]); });
  benchmark::RegisterBenchmark("Transform100000/kel", [](benchmark::State& state) {
    std::vector<CyVector> results(s.kel.points.size());
    for (auto _ : state) {
      XformPoints(s.kel.rigid[0], s.kel.points.data(), results.data(), results.size());
      benchmark::DoNotOptimize(results.data());
      benchmark::ClobberMemory();
    }
  });
  EachPoint("Transform100000/eigen", s.eigen.points,
            [](const Eigen::Vector3d& p) { return Eigen::Vector3d(s.eigen.rigid[0] * p); });
  EachPoint("Transform100000/glm", s.glm.points,
            [=](const glm::dvec3& p) { return glmPoint(s.glm.rigid[0], p); });
  EachPoint("Transform100000/imath", s.imath.points,
            [=](const Imath::V3d& p) { return imathPoint(s.imath.rigid[0], p); });
}

void RegisterConversions() {
  static const Sets& s = All();
  Each("QuaternionToMatrix/kel", [](auto a, auto) {
    CyMatrix m;
    m.SetQuat(s.kel.quaternions[a]);
    return m;
  });
  Each("QuaternionToMatrix/eigen", [](auto a, auto) {
    return EigenMatrix(Eigen::Quaterniond(s.eigen.quaternions[a].normalized()));
  });
  Each("QuaternionToMatrix/glm",
       [](auto a, auto) { return glm::mat4_cast(glm::normalize(s.glm.quaternions[a])); });
  Each("QuaternionToMatrix/imath",
       [](auto a, auto) { return s.imath.quaternions[a].normalized().toMatrix44(); });
  Each("MatrixToQuaternion/kel", [](auto a, auto) {
    CyQuaternion q;
    q.FromMatrix(s.kel.rigid[a]);
    return q;
  });
  Each("MatrixToQuaternion/eigen",
       [](auto a, auto) { return Eigen::Quaterniond(s.eigen.rigid[a].linear()); });
  Each("MatrixToQuaternion/glm", [](auto a, auto) { return glm::quat_cast(s.glm.rigid[a]); });
  Each("MatrixToQuaternion/imath",
       [](auto a, auto) { return Imath::extractQuat(s.imath.rigid[a]); });
  Each("RotationToQuaternion/kel", [](auto a, auto) { return CyQuaternion(s.kel.rotations[a]); });
  Each("RotationToQuaternion/eigen",
       [](auto a, auto) { return Eigen::Quaterniond(s.eigen.rotations[a]); });
  Each("RotationToQuaternion/glm", [](auto a, auto) {
    const AxisAngle& r = s.glm.rotations[a];
    return glm::angleAxis(r.angle, glm::dvec3(r.x, r.y, r.z));
  });
  Each("RotationToQuaternion/imath", [](auto a, auto) {
    const AxisAngle& r = s.imath.rotations[a];
    Imath::Quatd q;
    return q.setAxisAngle(Imath::V3d(r.x, r.y, r.z), r.angle);
  });
  Each("QuaternionToRotation/kel", [](auto a, auto) {
    CyRotation r;
    r.FromQuaternion(s.kel.quaternions[a]);
    return r;
  });
  Each("QuaternionToRotation/eigen",
       [](auto a, auto) { return EigenRotation(s.eigen.quaternions[a]); });
  Each("QuaternionToRotation/glm", [](auto a, auto) {
    const glm::dvec3 axis = glm::axis(s.glm.quaternions[a]);
    return AxisAngle{axis.x, axis.y, axis.z, glm::angle(s.glm.quaternions[a])};
  });
  Each("QuaternionToRotation/imath", [](auto a, auto) {
    const Imath::V3d axis = s.imath.quaternions[a].axis();
    return AxisAngle{axis.x, axis.y, axis.z, s.imath.quaternions[a].angle()};
  });
  Each("RotationToMatrix/kel", [](auto a, auto) {
    CyMatrix m;
    m.SetRotation(s.kel.rotations[a]);
    return m;
  });
  Each("RotationToMatrix/eigen", [](auto a, auto) { return EigenMatrix(s.eigen.rotations[a]); });
  Each("RotationToMatrix/glm", [](auto a, auto) {
    const AxisAngle& r = s.glm.rotations[a];
    return glm::rotate(glm::dmat4(1.0), r.angle, glm::dvec3(r.x, r.y, r.z));
  });
  Each("RotationToMatrix/imath", [](auto a, auto) {
    const AxisAngle& r = s.imath.rotations[a];
    Imath::M44d m;
    return m.setAxisAngle(Imath::V3d(r.x, r.y, r.z), r.angle);
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RegisterProducts();
  RegisterInverses();
  RegisterTransforms();
  RegisterConversions();
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return 0;
}
