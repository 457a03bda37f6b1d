// The bits of every operation, of irregular numbers and of zeros. They were computed from the
// formulas by another program, with every sine and arc cosine rounded once.

#include "tests/geometry/random_geometry.h"

namespace {

constexpr CyVector U(-0.7, 0.11, 1.3);
constexpr CyVector V(0.1, -0.2, 0.3);
constexpr CyQuaternion P(0.3, {0.1, -0.2, 0.7});
constexpr CyQuaternion Q(-1.1, {0.6, 0.5, 0.2});
constexpr CyMatrix G{MatGeneral,
                     {{2.1, 0.3, -0.7, 0.9}, {0.2, -1.3, 0.4, 1.1}, {-0.6, 0.8, 3.7, -0.1}}};
constexpr CyMatrix Zeros{MatGeneral, {}};
constexpr CyMatrix MinusOnes{MatGeneral,
                             {{-1, -1, -1, -0.0}, {-1, -1, -1, -0.0}, {-1, -1, -1, -0.0}}};

CyMatrix Placed(double scale) {
  CyMatrix m = Matrix(P);
  m.SetTrans(U);
  m.ScaleBy(scale);
  return m;
}

CyQuaternion FromMatrix(const CyMatrix& m) {
  CyQuaternion q;
  q.FromMatrix(m);
  return q;
}

/// `value` after one of its operations.
template <typename Geometry, typename Argument, typename Given>
Geometry After(Geometry value, void (Geometry::*operation)(Argument) noexcept, const Given& given) {
  (value.*operation)(given);
  return value;
}

template <typename Geometry>
void Expect(const Geometry& result, const Numbers& numbers) {
  EXPECT_TRUE(SameNumbers(NumbersOf(result), numbers, 0.0));
}

/// The vector normalised, and the length that it had.
Numbers Normalised(CyVector v) {
  const double length = v.NormalizeMag();
  return {v.x, v.y, v.z, length};
}

CyRotation RotationOf(const CyQuaternion& q) {
  CyRotation r;
  r.FromQuaternion(q);
  return r;
}

TEST(ExactBits, AtTheBoundsOfLengths) {
  Expect(Normalised({3, 0, 4}), {0.6, 0, 0.8, 5});
  Expect(Normalised({}), {0, 0, 0, 0});
  Expect(Normalised({1e-7, 0, 0}), {1e-7, 0, 0, 1e-7});
  Expect(Normalised({1e-6, 0, 0}), {1, 0, 0, 1e-6});
  Expect(Normalised({0, -1e-6, -0.0}), {0, -1, -0.0, 1e-6});
  Expect(Normalised({NotANumber, 1, 0}), Numbers(4, NotANumber));
  Expect(Normalised({Infinity, 1, 0}), {NotANumber, 0, 0, Infinity});
  Expect(CyVector(0, 2, -3) / 0.0, {NotANumber, Infinity, -Infinity});
  Expect(PerpVec({0, 0, 2}), {0, -1, 0});
  Expect(PerpVec({5, 0, 0}), {0, 0, -1});
  Expect(PerpVec({}), {0, 0, 0});
  Expect(PerpVec({1, 9e-7, 0}), {0, 0, -1});
  Expect(PerpVec({1, 0, 1e-6}), {0, -1, 0});
  Expect(RotationOf({0.5, {}}), {1, 0, 0, 0});
  Expect(RotationOf({-5, {}}), {1, 0, 0, 360});
  Expect(RotationOf({3, {0, 0, 3}}), {0, 0, 1, 90});
  Expect(RotationOf({0, {0, 3, 0}}), {0, 1, 0, 180});
  Expect(RotationOf({1, {1e-8, 0, 0}}), {1, 0, 0, 0});
  Expect(RotationOf({1.0000000000000002, {}}), {1, 0, 0, 0});
  Expect(CyQuaternion(CyRotation(0, 0, 0, 180)).v, {0, 0, 0});
}

TEST(ExactBits, OfEveryOperation) {
  Expect(V / 7.0, {0.014285714285714287, -0.028571428571428574, 0.04285714285714286});
  Expect(Cross(V, U), {-0.29300000000000004, -0.33999999999999997, -0.12899999999999998});
  Expect(CyVector(Dot(V, U), DistSq(V, U), P.Dot(Q)), {0.29800000000000004, 1.7361, -0.23});
  Expect(P * Q, {-0.43, -0.32000000000000006, 0.77, -0.54});
  Expect(P / 7.0,
         {0.04285714285714285, 0.014285714285714285, -0.02857142857142857, 0.09999999999999999});
  Expect(CyQuaternion(CyRotation(V, 1e6)),
         {0.7660444431183716, -0.17179221485093638, 0.34358442970187275, -0.5153766445528091});
  Expect(FromMatrix(G),
         {1.1726039399558574, 0.08528028654224418, -0.021320071635561037, -0.021320071635561037});
  Expect(RotationOf(P),
         {0.13608276348795434, -0.2721655269759087, 0.9525793444156803, 135.58469140280704});
  Expect(RotationOf({0.6, {0.8, 0, 0}}), {1, 0, 0, 106.26020470831197});
  Expect(G.XformPoint(V), {0.8400000000000001, 1.5, 0.7900000000000001});
  Expect(About({1, 0, 0}, 1e6).XformPoint(V), {0.1, 0.26071269037074624, 0.24905600390202884});
  Expect(About({0, 1, 0}, 1e6).XformPoint(V), {-0.27807750813725346, -0.2, 0.15057522860077527});
  Expect(About(V, 77).XformPoint(U),
         {-0.7554962999324979, -1.1906033945448773, 0.4514298369475815});
  Expect(About(U, -100).XformPoint(V),
         {-0.3239387570287591, -0.17387186094487558, 0.06951444214138855});
  Expect(About({0.001, 0.001, 0}, 180).XformPoint(V),
         {-0.19999999999999993, 0.10000000000000003, -0.30000000000000004});
  Expect(After(G, &CyMatrix::PreRotX, 77).XformPoint(V),
         {0.8400000000000001, -0.4323257696645385, 1.6392664301095063});
  Expect(After(G, &CyMatrix::PreRotZ, 77).XformPoint(V),
         {-1.2725962115290064, 1.155897435935395, 0.7900000000000001});
  Expect(Matrix(P).XformPoint(V), {0.0873015873015873, 0.0158730158730159, 0.36349206349206353});
  Expect(Placed(1).Inverse().XformPoint(V),
         {-1.1457142857142857, -0.05285714285714285, -0.6485714285714286});
  Expect(Placed(-7).Inverse().XformPoint(V),
         {0.16367346938775512, 0.007551020408163256, 0.0926530612244898});
  Expect(G.Inverse().XformPoint(V), {-0.5604250916956643, 0.8617511520737328, -0.1690962099125365});
  Expect((G * G).XformPoint(V), {2.561, -0.3660000000000002, 3.5190000000000006});
  Expect(FromMatrix({MatGeneral, {{1}, {0.5, -1}, {0.25, 0, -1}}}), {0, 1, 0.25, 0.125});
  Expect(FromMatrix({MatGeneral, {{-1}, {0, 1}, {0, 0.5, -1}}}), {0, 0, 1, 0.25});
  Expect(FromMatrix({MatGeneral, {{-1}, {0, -1}, {0, 0, 1}}}), {0, 0, 0, 1});
  Expect(About({0, 0, -1}, 0), {1, 0, 0, 0, -0.0, 1, 0, 0, 0, 0, 1, 0});
  Expect(About({0, 0, 1}, 0).Inverse(), {1, 0, 0, -0.0, -0.0, 1, 0, -0.0, 0, 0, 1, -0.0});
  Expect(CyMatrix{MatTranslate, {{1, 0, 0, 1}, {0, 1, 0, 2}, {0, 0, 1, 3}}} * About({0, 0, 1}, 0),
         {1, -0.0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3});
  Expect(MinusOnes * Zeros, Numbers(12, -0.0));
}

}  // namespace
