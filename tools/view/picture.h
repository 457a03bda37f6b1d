#pragma once

#include <string>
#include <vector>

#include "geometry/vector.h"

class CaValue;

/// Pictures of values: one description of what is drawn, where and with which name, from which
/// the writers make a drawing, a page or a model. It knows nothing of files and terminals.
///
/// Positions in a picture are its own: a place P of the world stands at (P - centre) / unit, so
/// that whatever is drawn reaches a few units far, be it atoms or galaxies. Z is up.
namespace kelview {

/// A value to be drawn. `value` is borrowed until the picture is made.
struct NamedValue {
  std::string name;
  const CaValue* value;
  std::string text;  // as a person reads it; may have several lines
};

/// What a line or a dot is drawn with. The colours are told in ink.h.
enum class Ink { Point, Vector, Rotation, Scale, AxisX, AxisY, AxisZ, Grid, Text };

/// Marks whatever belongs to no value.
inline constexpr int NoThing = -1;

/// One value, drawn or not.
struct Thing {
  std::string name;
  std::string type;  // "point"
  std::string text;
  std::string note;  // what the picture cannot show: lengths, a mirrored frame, why it is not drawn
  bool drawn = false;
  CyVector at;  // where its name belongs
  Ink ink = Ink::Text;
};

struct Mark {
  int thing;
  Ink ink;
  CyVector at;
};

enum class Pen { Thin, Strong, Dashed, Filled };

/// A line through two places or more; Filled, the flat face inside it.
struct Stroke {
  int thing;
  Ink ink;
  Pen pen;
  bool arrow;  // a head at its end
  std::vector<CyVector> line;
};

/// What comes to lie over what, from below: the grid, axes, faces, lines.
int Level(const Stroke& stroke);

/// How large a label is written, in pixels.
inline constexpr double LargeLabel = 13.0;
inline constexpr double SmallLabel = 11.0;

struct Label {
  int thing;
  Ink ink;
  std::string text;
  CyVector at;
  double size = LargeLabel;
};

struct Picture {
  CyVector centre;    // in the world, of the picture's place (0, 0, 0)
  double unit = 1.0;  // how long one unit of the picture is in the world; a power of ten
  CyVector middle;    // of all that is drawn
  double radius = 1;  // around `middle`, which holds all that is drawn
  bool empty = true;  // no thing is drawn; `message` says why
  std::string message;
  std::vector<Thing> things;
  std::vector<Stroke> strokes;
  std::vector<Mark> dots;
  std::vector<Label> labels;  // the most important first
};

/// Describes the picture of `values`, in their order. Vectors start at the place `from` of the
/// world. Never fails: what cannot be drawn is among the things, with a note that says why.
Picture DescribePicture(const std::vector<NamedValue>& values, const CyVector& from = {});

}  // namespace kelview
