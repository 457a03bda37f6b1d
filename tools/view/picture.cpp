#include "tools/view/picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "calc/explain/alternatives.h"
#include "calc/object.h"
#include "tools/view/fit.h"
#include "tools/view/grid.h"
#include "tools/view/shapes.h"
#include "tools/view/text.h"

namespace kelview {
namespace {

bool BeyondDrawing(const Reach& reach) {
  return std::any_of(reach.begin(), reach.end(), [](const CyVector& place) {
    return !(std::fabs(place.x) <= FarthestDrawn && std::fabs(place.y) <= FarthestDrawn &&
             std::fabs(place.z) <= FarthestDrawn);
  });
}

/// The thing that `named` becomes; `drawn` unless something forbids it, which its note then says.
Thing Told(const NamedValue& named, const CyVector& from) {
  const CaValue& value = *named.value;
  Thing thing{CleanText(named.name),
              kelcalc::TypeName(value.type),
              CleanText(named.text),
              "",
              false,
              {},
              {}};
  const Shape* shape = ShapeOf(value.type);
  if (!IsFinite(value)) {
    thing.note = "not finite";
  } else if (shape != nullptr) {
    thing.ink = shape->ink;
    if (const char* refusal = shape->refusal(value); refusal != nullptr) {
      thing.note = refusal;
    } else if (BeyondDrawing(shape->reach(value, from))) {
      thing.note = "too large to draw";
    } else {
      thing.note = shape->note(value);
      thing.drawn = true;
    }
  }
  return thing;
}

std::string WhyEmpty(std::size_t count) {
  if (count == 0) return "Nothing to draw: there are no values.";
  if (count == 1) return "Nothing to draw: the only value has no place in space.";
  return "Nothing to draw: none of the " + std::to_string(count) + " values has a place in space.";
}

}  // namespace

int Level(const Stroke& stroke) {
  if (stroke.thing == NoThing) return stroke.ink == Ink::Grid ? 0 : 1;
  return stroke.pen == Pen::Filled ? 2 : 3;
}

Picture DescribePicture(const std::vector<NamedValue>& values, const CyVector& from) {
  Picture picture;
  std::vector<Reach> reaches;
  for (const NamedValue& named : values) {
    picture.things.push_back(Told(named, from));
    const bool drawn = picture.things.back().drawn;
    reaches.push_back(drawn ? ShapeOf(named.value->type)->reach(*named.value, from) : Reach());
    picture.empty = picture.empty && !drawn;
  }
  if (picture.empty) {
    picture.message = WhyEmpty(values.size());
    return picture;
  }
  const Fit fit = FitView(reaches);
  picture.centre = fit.centre;
  picture.unit = fit.unit;
  Pose pose{&fit, from, fit.pivot, 0};
  for (std::size_t i = 0; i < values.size(); ++i) {
    Thing& thing = picture.things[i];
    if (thing.drawn && fit.tooFar[i]) {
      thing.drawn = false;
      thing.note = "too far away to draw";
    }
    if (thing.drawn) DrawShape(*values[i].value, static_cast<int>(i), pose, picture);
  }
  std::vector<Label> names;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const Thing& thing = picture.things[i];
    if (thing.drawn) names.push_back({static_cast<int>(i), thing.ink, thing.name, thing.at});
  }
  picture.labels.insert(picture.labels.begin(), names.begin(), names.end());
  DrawGrid(fit, picture);
  return picture;
}

}  // namespace kelview
