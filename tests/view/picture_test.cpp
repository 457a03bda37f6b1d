// What a picture shows, where, and what it tells instead.

#include "tools/view/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "calc/object.h"
#include "tools/view/labels.h"
#include "tools/view/text.h"

namespace kelview {
namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

CaValue Point(double x, double y, double z) { return {TypePoint, CyVector(x, y, z)}; }
CaValue Vector(double x, double y, double z) { return {TypeVector, CyVector(x, y, z)}; }
CaValue Scale(double x, double y, double z) { return {TypeScale, CyVector(x, y, z)}; }
CaValue Turn(double x, double y, double z, double angle) {
  return CaValue(CyRotation(x, y, z, angle));
}
CaValue Quaternion(double w, double x, double y, double z) {
  return CaValue(CyQuaternion(w, {x, y, z}));
}
CaValue Frame(const CyVector& x, const CyVector& y, const CyVector& z, const CyVector& place = {}) {
  CyMatrix matrix;
  matrix.SetCol0(x.x, x.y, x.z);
  matrix.SetCol1(y.x, y.y, y.z);
  matrix.SetCol2(z.x, z.y, z.z);
  matrix.SetTrans(place);
  return CaValue(matrix);
}

Picture PictureOf(const std::vector<CaValue>& values) {
  std::vector<NamedValue> named;
  named.reserve(values.size());
  for (const CaValue& value : values) named.push_back({"n", &value, ""});
  return DescribePicture(named);
}

CyVector InWorld(const Picture& picture, const CyVector& place) {
  return place * picture.unit + picture.centre;
}

double Gap(const CyVector& a, const CyVector& b) {
  return std::max({std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z)});
}

/// Every coordinate is of a size that a screen and single precision can take.
void ExpectFits(const Picture& picture) {
  std::vector<CyVector> places;
  for (const Mark& dot : picture.dots) places.push_back(dot.at);
  for (const Label& label : picture.labels) places.push_back(label.at);
  for (const Stroke& stroke : picture.strokes) {
    places.insert(places.end(), stroke.line.begin(), stroke.line.end());
  }
  EXPECT_GT(picture.radius, 0.1);
  EXPECT_LT(picture.radius, 100.0);
  for (const CyVector& place : places) {
    EXPECT_LE((place - picture.middle).Mag(), picture.radius * 1.01);
  }
  EXPECT_LT(picture.labels.size(), 200U);
}

TEST(Picture, TellsWhatItCannotShow) {
  const CyVector x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  const struct {
    CaValue value;
    const char* note;
    bool drawn;
    std::size_t strokes;
  } rows[] = {
      {Point(1, 2, 3), "", true, 0},
      {Point(1, 2, Infinity), "not finite", false, 0},
      {Point(0, 0, 1.7e308), "too large to draw", false, 0},
      {Vector(3, 0, 4), "length 5", true, 1},
      {Vector(0, 0, 0), "length 0", true, 0},
      {Frame(x, y, z), "axes 1, 1, 1", true, 3},
      {Frame(x * 2, y, -z), "axes 2, 1, 1; mirrored", true, 3},
      {Frame(x * 1e-300, z * 1e300, y), "axes 1e-300, 1e+300, 1; mirrored", true, 1},
      {Frame(x, y, z * 1e9), "axes 1, 1, 1e+09", true, 1},
      {Frame(x, y, x + y), "axes 1, 1, 1.41421; flat", true, 3},
      {Frame(x, y, {0, 0, 0}), "axes 1, 1, 0; flat", true, 2},
      {Turn(0, 0, 1, 90), "", true, 4},
      {Turn(0, 0, 1, 0), "no turn", true, 1},
      {Turn(0, 0, 1, -900), "-2.5 turns", true, 4},
      {Turn(0, 0, 1, 1e300), "2.77778e+297 turns", true, 4},
      {Turn(0, 0, 0, 90), "no axis", false, 0},
      {Turn(0, 0, 1, std::nan("")), "not finite", false, 0},
      {Quaternion(0.5, 0.5, 0.5, 0.5), "120 degrees", true, 4},
      {Quaternion(0, 1e-200, 0, 0), "180 degrees; length 1e-200", true, 4},
      {Quaternion(1e300, 0, 0, 1e300), "90 degrees; length 1.41421e+300", true, 4},
      {Quaternion(0, 0, 0, 0), "length 0", false, 0},
      {Scale(1, 2, 3), "", true, 18},
      {Scale(1, 2, -3), "mirrored", true, 18},
      {Scale(-1, 2, -3), "", true, 18},
      {Scale(1, 0, 1), "flat", true, 18},
      {Scale(0, 0, 0), "no size", false, 0},
      {CaValue(7.0), "", false, 0},
      {CaValue(Infinity), "not finite", false, 0},
      {CaValue("text"), "", false, 0},
      {CaValue(), "", false, 0},
  };
  for (const auto& row : rows) {
    const Picture picture = PictureOf({row.value});
    SCOPED_TRACE(picture.things[0].type + " " + row.note);
    EXPECT_EQ(picture.things[0].note, row.note);
    EXPECT_EQ(picture.things[0].drawn, row.drawn);
    EXPECT_EQ(picture.empty, !row.drawn);
    EXPECT_EQ(picture.message.empty(), row.drawn);
    EXPECT_EQ(std::count_if(picture.strokes.begin(), picture.strokes.end(),
                            [](const Stroke& stroke) { return stroke.thing == 0; }),
              row.strokes);
    if (row.drawn) ExpectFits(picture);
  }
}

TEST(Picture, PutsThingsWhereTheyAre) {
  CyMatrix turn;
  turn.RotZ(90);
  const CyVector place(-3, 2, 1);
  const Picture picture = PictureOf({Point(3, 1, 2), Vector(0, 2, 1), Turn(0, 0, 5, 90),
                                     Frame({2, 0, 0}, {0, 1, 0}, {0, 0, 1}, place)});
  const auto end = [&](std::size_t stroke) {
    return InWorld(picture, picture.strokes[stroke].line.back());
  };
  EXPECT_LT(Gap(InWorld(picture, picture.dots[0].at), {3, 1, 2}), 1e-12);
  EXPECT_LT(Gap(end(0), {0, 2, 1}), 1e-12);
  // The turn's axis, its face, the line where it begins, and its arc: right-handed about z.
  EXPECT_GT(end(1).z, 1.0);
  const std::vector<CyVector>& arc = picture.strokes[4].line;
  const CyVector hub(0, 0, arc[0].z);
  EXPECT_LT(Gap(arc.back() - hub, turn.XformVec(arc.front() - hub)), 1e-12);
  EXPECT_LT(Gap(end(5), {-1, 2, 1}), 1e-12);
  EXPECT_LT(Gap(end(7), {-3, 2, 2}), 1e-12);
  EXPECT_EQ(picture.strokes[5].ink, Ink::AxisX);
}

TEST(Picture, FitsEverySize) {
  for (int exponent = -300; exponent <= 300; exponent += 20) {
    SCOPED_TRACE(exponent);
    const double size = std::pow(10.0, exponent);
    for (const double away : {0.0, 1e3, 1e9}) {
      const CyVector far(away * size, 0, 0);
      if (!std::isfinite(away * size) || away * size > 1e301) continue;
      const auto point = [&](double x, double y, double z) {
        return Point(far.x + x * size, y * size, z * size);
      };
      const Picture picture = PictureOf({point(1, 2, 3), point(3, 1, -1), point(2, 2, 2)});
      ExpectFits(picture);
      const CyVector apart = picture.dots[0].at - picture.dots[1].at;
      EXPECT_GT(apart.Mag(), 0.2 * picture.radius);
      EXPECT_NEAR(apart.z / apart.x, -2.0, 1e-5);
    }
  }
}

TEST(Picture, LeavesOutWhatWouldSqueezeTheRest) {
  std::vector<CaValue> values;
  values.reserve(21);
  for (int i = 0; i < 20; ++i) values.push_back(Point(i % 5, i % 4, i % 3));
  values.push_back(Point(1e12, 0, 0));
  Picture picture = PictureOf(values);
  EXPECT_FALSE(picture.things[20].drawn);
  EXPECT_EQ(picture.things[20].note, "too far away to draw");
  EXPECT_EQ(picture.dots.size(), 20U);
  EXPECT_LT(picture.unit * picture.radius, 10.0);
  // A wide field with no gap, and two things far apart, are shown whole.
  for (int i = 0; i < 20; ++i) values[static_cast<std::size_t>(i)] = Point(std::pow(4.0, i), 0, 0);
  EXPECT_EQ(PictureOf(values).dots.size(), 21U);
  EXPECT_EQ(PictureOf({Point(0, 0, 0), Point(1e12, 0, 0)}).dots.size(), 2U);
}

TEST(Picture, NumbersItsGrid) {
  const auto numbers = [](const Picture& picture) {
    std::string text;
    for (const Label& label : picture.labels) {
      if (label.thing == NoThing && label.ink == Ink::Text) text += label.text + " ";
    }
    return text;
  };
  EXPECT_EQ(numbers(PictureOf({Point(0.3, 0.1, 0)})),
            "0 0.05 0.1 0.15 0.2 0.25 0.3 "
            "-0.05 0 0.05 0.1 0.15 ");
  const Picture far = PictureOf({Point(1e6 + 1, 1e6, 1e6), Point(1e6 - 1, 1e6, 1e6)});
  EXPECT_NE(numbers(far).find("999999 999999.2 "), std::string::npos) << numbers(far);
  EXPECT_LT(Gap(InWorld(far, far.dots[0].at), {1e6 + 1, 1e6, 1e6}), 1e-9);
}

TEST(Labels, DoNotOverlap) {
  std::mt19937 random(5);
  std::vector<Spot> placed;
  LabelRoom room(700, 500);
  for (int i = 0; i < 3000; ++i) {
    const Spot anchor{static_cast<double>(random() % 700), static_cast<double>(random() % 500)};
    if (const auto spot = room.Place(anchor, 40, 14); spot) placed.push_back(*spot);
  }
  EXPECT_GT(placed.size(), 250U);  // of 625 that would fill the paper
  for (std::size_t i = 0; i < placed.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      EXPECT_TRUE(std::fabs(placed[i].x - placed[j].x) >= 40 ||
                  std::fabs(placed[i].y - placed[j].y) >= 14);
    }
  }
}

TEST(Text, IsCleanUtf8) {
  const struct {
    std::string bytes;
    std::string text;
  } rows[] = {
      {"plain\n", "plain\n"},
      {"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80", "ä € 😀"},
      {"\xE4", "ä"},
      {"\x01\x1B\x7F\x80", "????"},
      {"\xC0\xAF", "À¯"},
      {"\xED\xA0\x80", "í\u00A0?"},
      {"\xEF\xBF\xBF", "ï¿¿"},
      {"\xE2\x82", "â?"},
      {"\xF4\x90\x80\x80", "ô???"},
      {"\xE0\x80\x80", "à??"},
  };
  for (const auto& row : rows) EXPECT_EQ(CleanText(row.bytes), row.text);
}

}  // namespace
}  // namespace kelview
