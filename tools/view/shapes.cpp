#include "tools/view/shapes.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

#include "calc/object.h"
#include "geometry/quaternion.h"
#include "geometry/rotation.h"
#include "tools/view/text.h"

namespace kelview {
namespace {

constexpr double RadiansPerDegree = 0.017453292519943295;
constexpr Ink AxisInks[] = {Ink::AxisX, Ink::AxisY, Ink::AxisZ};
constexpr const char* AxisNames[] = {"x", "y", "z"};

double Length(const CyVector& v) { return std::hypot(v.x, v.y, v.z); }
double Length(const CyQuaternion& q) { return std::hypot(q.w, Length(q.v)); }

/// `v` at length 1, however small or large it is; the zero vector stays.
CyVector Direction(const CyVector& v) {
  const double largest = std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
  return largest == 0.0 ? v : (v / largest).Normalize();
}

CyVector Column(const CyMatrix& matrix, int column) {
  return {matrix.m[0][column], matrix.m[1][column], matrix.m[2][column]};
}

/// The turn that `q` stands for, whatever its length.
CyRotation Turn(const CyQuaternion& q) {
  const double length = Length(q);
  CyRotation turn;
  turn.FromQuaternion(CyQuaternion(q.w / length, q.v / length));
  return turn;
}

// The places that values take.

Reach ReachOfPoint(const CaValue& value, const CyVector&) { return {value.point}; }

Reach ReachOfVector(const CaValue& value, const CyVector& from) {
  return {from, from + value.vector};
}

Reach ReachOfMatrix(const CaValue& value, const CyVector&) {
  const CyVector place = Column(value.matrix, 3);
  return {place + Column(value.matrix, 0), place + Column(value.matrix, 1),
          place + Column(value.matrix, 2), place};
}

Reach ReachOfScale(const CaValue& value, const CyVector&) {
  return {value.scale / 2, value.scale / -2, {}};
}

Reach NoReach(const CaValue&, const CyVector&) { return {}; }

// What is told beside the picture.

std::string NoNote(const CaValue&) { return ""; }

std::string NoteOfVector(const CaValue& value) {
  return "length " + NumberText(Length(value.vector));
}

/// From -1 to 1: negative for a mirrored frame, 0 for a flat one, whatever the lengths.
double Handedness(const CyMatrix& matrix) {
  return Dot(Cross(Direction(Column(matrix, 0)), Direction(Column(matrix, 1))),
             Direction(Column(matrix, 2)));
}

std::string NoteOfMatrix(const CaValue& value) {
  std::string note = "axes";
  const char* separator = " ";
  for (int i = 0; i < 3; ++i) {
    note += separator + NumberText(Length(Column(value.matrix, i)));
    separator = ", ";
  }
  const double handedness = Handedness(value.matrix);
  if (std::fabs(handedness) < 1e-9) return note + "; flat";
  return handedness < 0.0 ? note + "; mirrored" : note;
}

std::string NoteOfRotation(const CaValue& value) {
  const double angle = value.rotation.angle;
  if (angle == 0.0) return "no turn";
  return std::fabs(angle) > 360.0 ? NumberText(angle / 360.0) + " turns" : "";
}

std::string NoteOfQuaternion(const CaValue& value) {
  const double length = Length(value.quaternion);
  if (length == 0.0) return "";
  const std::string angle = NumberText(Turn(value.quaternion).angle) + " degrees";
  return std::fabs(length - 1.0) <= 1e-6 ? angle : angle + "; length " + NumberText(length);
}

std::string NoteOfScale(const CaValue& value) {
  const CyVector& s = value.scale;
  if (s.x == 0.0 || s.y == 0.0 || s.z == 0.0) return "flat";
  return (s.x < 0.0) != ((s.y < 0.0) != (s.z < 0.0)) ? "mirrored" : "";
}

const char* NoRefusal(const CaValue&) { return nullptr; }

const char* RefusalOfRotation(const CaValue& value) {
  return Length(value.rotation.axis) == 0.0 ? "no axis" : nullptr;
}

const char* RefusalOfScale(const CaValue& value) {
  return Length(value.scale) == 0.0 ? "no size" : nullptr;
}

const char* RefusalOfQuaternion(const CaValue& value) {
  return Length(value.quaternion) == 0.0 ? "length 0" : nullptr;
}

}  // namespace

/// Draws one thing.
class Drawing {
 public:
  Drawing(int thing, Ink ink, Pose& pose, Picture& picture)
      : thing_(thing), ink_(ink), pose_(pose), picture_(picture) {}

  void Point(const CyVector& point) { PutDot(ToPicture(point)); }

  void Vector(const CyVector& vector) {
    const CyVector start = ToPicture(pose_.from);
    const CyVector end = ToPicture(pose_.from + vector);
    if (TooSmall(end - start)) return PutDot(end);
    Put(Pen::Strong, {start, end}, true);
    PutName(end);
  }

  /// A mirrored frame is dashed.
  void Matrix(const CyMatrix& matrix) {
    const Pen pen = Handedness(matrix) <= -1e-9 ? Pen::Dashed : Pen::Strong;
    const CyVector place = ToPicture(Column(matrix, 3));
    for (int i = 0; i < 3; ++i) {
      const CyVector end = ToPicture(Column(matrix, 3) + Column(matrix, i));
      if (TooSmall(end - place)) continue;
      picture_.strokes.push_back({thing_, AxisInks[i], pen, true, {place, end}});
      picture_.labels.push_back({thing_, AxisInks[i], AxisNames[i], end, SmallLabel});
    }
    PutDot(place);
  }

  void Rotation(const CyRotation& rotation) {
    const double size = pose_.fit->half;
    const CyVector axis = Direction(rotation.axis);
    const CyVector end = pose_.pivot + axis * (0.8 * size);
    Put(Pen::Strong, {pose_.pivot - axis * (0.2 * size), end}, true);
    PutName(end);
    const double angle = std::clamp(rotation.angle, -360.0, 360.0);
    if (angle != 0.0) Arc(axis, angle, 0.5 * size, (0.2 + 0.06 * (pose_.turns++ % 4)) * size);
  }

  /// Twelve edges and six faces.
  void Scale(const CyVector& scale) {
    const auto corner = [&](int number) {
      const auto side = [number](int bit) { return (number & bit) != 0 ? 0.5 : -0.5; };
      return ToPicture({scale.x * side(1), scale.y * side(2), scale.z * side(4)});
    };
    for (const int bit : {1, 2, 4}) {
      const int across = bit == 4 ? 1 : bit * 2;
      const int up = 7 - bit - across;
      for (const int base : {0, bit}) {
        Put(Pen::Filled,
            {corner(base), corner(base + across), corner(base + across + up), corner(base + up)},
            false);
      }
      for (const int base : {0, across, up, across + up}) {
        Put(Pen::Thin, {corner(base), corner(base + bit)}, false);
      }
    }
    if (TooSmall(corner(7) - corner(0))) PutDot({});
    PutName(corner(7));
  }

 private:
  /// Whether something would hardly be seen: then a dot shows where it is.
  bool TooSmall(const CyVector& size) const { return Length(size) < 2e-3 * pose_.fit->half; }

  CyVector ToPicture(const CyVector& place) const { return pose_.fit->ToPicture(place); }

  void PutName(const CyVector& at) { picture_.things[static_cast<std::size_t>(thing_)].at = at; }

  void PutDot(const CyVector& at) {
    picture_.dots.push_back({thing_, ink_, at});
    PutName(at);
  }

  void Put(Pen pen, std::vector<CyVector> line, bool arrow) {
    picture_.strokes.push_back({thing_, ink_, pen, arrow, std::move(line)});
  }

  /// A turn by `angle` about `axis`, `along` it from the pivot, with the face that it sweeps.
  void Arc(const CyVector& axis, double angle, double along, double radius) {
    const CyVector right = PerpVec(axis) * radius;
    const CyVector ahead = Cross(axis, right);
    const CyVector hub = pose_.pivot + axis * along;
    const int steps = std::max(2, static_cast<int>(std::ceil(std::fabs(angle) / 6.0)));
    std::vector<CyVector> line;
    for (int i = 0; i <= steps; ++i) {
      const double turned = angle * RadiansPerDegree * i / steps;
      line.push_back(hub + right * std::cos(turned) + ahead * std::sin(turned));
    }
    std::vector<CyVector> face = line;
    face.push_back(hub);
    Put(Pen::Filled, std::move(face), false);
    Put(Pen::Thin, {hub, line.front()}, false);
    Put(Pen::Strong, std::move(line), true);
  }

  int thing_;
  Ink ink_;
  Pose& pose_;
  Picture& picture_;
};

namespace {

// clang-format off
constexpr Shape Shapes[] = {
    // In the order of CaType, from TypeVector on.
    {Ink::Vector, ReachOfVector, NoteOfVector, NoRefusal,
     [](Drawing& to, const CaValue& value) { to.Vector(value.vector); }},
    {Ink::Point, ReachOfPoint, NoNote, NoRefusal,
     [](Drawing& to, const CaValue& value) { to.Point(value.point); }},
    {Ink::Point, ReachOfMatrix, NoteOfMatrix, NoRefusal,
     [](Drawing& to, const CaValue& value) { to.Matrix(value.matrix); }},
    {Ink::Rotation, NoReach, NoteOfQuaternion, RefusalOfQuaternion,
     [](Drawing& to, const CaValue& value) { to.Rotation(Turn(value.quaternion)); }},
    {Ink::Rotation, NoReach, NoteOfRotation, RefusalOfRotation,
     [](Drawing& to, const CaValue& value) { to.Rotation(value.rotation); }},
    {Ink::Scale, ReachOfScale, NoteOfScale, RefusalOfScale,
     [](Drawing& to, const CaValue& value) { to.Scale(value.scale); }},
};
// clang-format on
static_assert(sizeof Shapes / sizeof *Shapes == TypeScale - TypeVector + 1);

}  // namespace

const Shape* ShapeOf(int type) {
  return type >= TypeVector && type <= TypeScale ? &Shapes[type - TypeVector] : nullptr;
}

bool IsFinite(const CaValue& value) {
  const auto finite = [](std::initializer_list<double> numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double n) { return std::isfinite(n); });
  };
  const auto finiteVector = [&](const CyVector& v) { return finite({v.x, v.y, v.z}); };
  switch (value.type) {
    case TypeReal:
      return finite({value.real});
    case TypeVector:
      return finiteVector(value.vector);
    case TypePoint:
      return finiteVector(value.point);
    case TypeScale:
      return finiteVector(value.scale);
    case TypeQuaternion:
      return finite({value.quaternion.w}) && finiteVector(value.quaternion.v);
    case TypeRotation:
      return finite({value.rotation.angle}) && finiteVector(value.rotation.axis);
    case TypeMatrix:
      return finiteVector(Column(value.matrix, 0)) && finiteVector(Column(value.matrix, 1)) &&
             finiteVector(Column(value.matrix, 2)) && finiteVector(Column(value.matrix, 3));
    default:
      return true;
  }
}

void DrawShape(const CaValue& value, int index, Pose& pose, Picture& picture) {
  Drawing drawing(index, picture.things[static_cast<std::size_t>(index)].ink, pose, picture);
  ShapeOf(value.type)->draw(drawing, value);
}

}  // namespace kelview
