// The drawing: what lies behind first, then the names where there is room, and a table beside it.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/view/drawing_table.h"
#include "tools/view/ink.h"
#include "tools/view/labels.h"
#include "tools/view/svg.h"
#include "tools/view/text.h"
#include "tools/view/writers.h"

namespace kelview {
namespace {

using svg::Attribute;
using svg::Element;
using svg::Number;
using svg::Points;
using svg::TextAt;

constexpr double Width = 700.0;  // of the drawing; the table stands to the right of it
constexpr double Height = 560.0;
constexpr double Margin = 36.0;
constexpr std::size_t ManyDots = 500;  // are drawn smaller

// From the front right and above: 60 degrees around, 30 degrees up.
constexpr CyVector Right{0.8660254037844386, 0.5, 0.0};
constexpr CyVector Up{-0.25, 0.4330127018922193, 0.8660254037844386};
constexpr CyVector Near{0.4330127018922193, -0.75, 0.5};

class Drawing {
 public:
  explicit Drawing(const Picture& picture) : picture_(picture) { Fit(); }

  std::string Text() {
    DrawStrokes();
    DrawDots();
    for (const Label& label : picture_.labels) DrawLabel(label);
    return body_;
  }

 private:
  Spot Project(const CyVector& place) const {
    const CyVector p = place - picture_.middle;
    return {x_ + Dot(p, Right) * scale_, y_ - Dot(p, Up) * scale_};
  }

  std::vector<Spot> Project(const std::vector<CyVector>& line) const {
    std::vector<Spot> spots;
    spots.reserve(line.size());
    for (const CyVector& place : line) spots.push_back(Project(place));
    return spots;
  }

  /// Makes all that is drawn fill the paper.
  void Fit() {
    Spot low{1e9, 1e9};
    Spot high{-1e9, -1e9};
    const auto take = [&](const CyVector& place) {
      const Spot spot = Project(place);
      low = {std::min(low.x, spot.x), std::min(low.y, spot.y)};
      high = {std::max(high.x, spot.x), std::max(high.y, spot.y)};
    };
    for (const Mark& dot : picture_.dots) take(dot.at);
    for (const Stroke& stroke : picture_.strokes) {
      std::for_each(stroke.line.begin(), stroke.line.end(), take);
    }
    scale_ =
        std::min((Width - 2 * Margin) / (high.x - low.x), (Height - 2 * Margin) / (high.y - low.y));
    x_ = Width / 2 - (low.x + high.x) / 2 * scale_;
    y_ = Height / 2 - (low.y + high.y) / 2 * scale_;
  }

  /// The order of drawing: by level, each from the back to the front.
  struct Layer {
    int level;
    double depth;
    std::size_t index;
    bool operator<(const Layer& other) const {
      return level != other.level ? level < other.level : depth < other.depth;
    }
  };

  void DrawStrokes() {
    std::vector<Layer> layers;
    for (std::size_t i = 0; i < picture_.strokes.size(); ++i) {
      const Stroke& stroke = picture_.strokes[i];
      double depth = 0.0;
      for (const CyVector& place : stroke.line) depth += Dot(place, Near);
      layers.push_back({Level(stroke), depth / static_cast<double>(stroke.line.size()), i});
    }
    std::stable_sort(layers.begin(), layers.end());
    for (const Layer& layer : layers) DrawStroke(picture_.strokes[layer.index]);
  }

  void DrawStroke(const Stroke& stroke) {
    std::vector<Spot> line = Project(stroke.line);
    const std::string colour = Colours(stroke.ink).light;
    if (stroke.pen == Pen::Filled) {
      body_ +=
          Element("polygon", {{"points", Points(line)}, {"fill", colour}, {"fill-opacity", "0.14"}},
                  Title(stroke.thing));
      return;
    }
    const bool strong = stroke.pen != Pen::Thin;
    const std::vector<Spot> head =
        stroke.arrow ? CutHead(line, strong ? 11.0 : 8.0) : std::vector<Spot>();
    std::vector<Attribute> style = {{"points", Points(line)},
                                    {"fill", "none"},
                                    {"stroke", colour},
                                    {"stroke-width", strong ? "2.4" : "1.2"}};
    if (stroke.pen == Pen::Dashed) style.push_back({"stroke-dasharray", "6 4"});
    body_ += Element("polyline", style, Title(stroke.thing));
    if (!head.empty()) body_ += Element("polygon", {{"points", Points(head)}, {"fill", colour}});
    if (stroke.thing != NoThing) room_.TakeLine(line);
  }

  /// What a reader shows where the pointer rests.
  std::string Title(int thing) const {
    if (thing == NoThing) return "";
    std::string title = "<title>";
    title += EscapeMarkup(picture_.things[static_cast<std::size_t>(thing)].name);
    return title += "</title>";
  }

  /// The corners of an arrow's head at the end of `line`, which is cut back to make room for it;
  /// none where the line runs along the sight.
  static std::vector<Spot> CutHead(std::vector<Spot>& line, double size) {
    const Spot tip = line.back();
    Spot way;
    double length = 0.0;
    for (std::size_t i = line.size() - 1; i-- > 0 && length < size / 2;) {
      way = {tip.x - line[i].x, tip.y - line[i].y};
      length = std::sqrt(way.x * way.x + way.y * way.y);
    }
    if (length < 0.5) return {};
    way = {way.x / length, way.y / length};
    const double back = std::min(size, length * 0.8);
    const double half = back * 0.36;
    const Spot base{tip.x - way.x * back, tip.y - way.y * back};
    line.back() = {tip.x - way.x * back * 0.8, tip.y - way.y * back * 0.8};
    return {tip,
            {base.x - way.y * half, base.y + way.x * half},
            {base.x + way.y * half, base.y - way.x * half}};
  }

  void DrawDots() {
    std::vector<Layer> layers;
    for (std::size_t i = 0; i < picture_.dots.size(); ++i) {
      layers.push_back({0, Dot(picture_.dots[i].at, Near), i});
    }
    std::stable_sort(layers.begin(), layers.end());
    const std::string radius = picture_.dots.size() > ManyDots ? "2" : "4";
    for (const Layer& layer : layers) {
      const Mark& dot = picture_.dots[layer.index];
      const Spot spot = Project(dot.at);
      body_ += Element("circle",
                       {{"cx", Number(spot.x)},
                        {"cy", Number(spot.y)},
                        {"r", radius},
                        {"fill", Colours(dot.ink).light},
                        {"stroke", "#ffffff"},
                        {"stroke-width", "0.8"}},
                       Title(dot.thing));
      room_.Take(spot, 8, 8);
    }
  }

  void DrawLabel(const Label& label) {
    const double size = label.size;
    const Spot anchor = Project(label.at);
    const double width = static_cast<double>(svg::CharacterCount(label.text)) * size * 0.6 + 2;
    const std::optional<Spot> spot = room_.Place(anchor, width, size + 1, label.ink == Ink::Text);
    if (!spot) return;
    const std::string colour = Colours(label.ink).light;
    const double aside = std::max(0.0, std::fabs(spot->x - anchor.x) - width / 2);
    const double above = std::max(0.0, std::fabs(spot->y - anchor.y) - size / 2);
    if (aside + above > 18.0) {  // the name found no room beside its thing
      body_ += Element(
          "polyline",
          {{"points", Points({anchor, *spot})}, {"stroke", colour}, {"stroke-width", "0.6"}});
    }
    std::vector<Attribute> style = {{"font-size", Number(size)}, {"fill", colour},
                                    {"text-anchor", "middle"},   {"stroke", "#ffffff"},
                                    {"stroke-width", "3"},       {"paint-order", "stroke"}};
    if (label.ink != Ink::Text) style.push_back({"font-weight", "bold"});
    body_ += TextAt({spot->x, spot->y + size * 0.36}, std::move(style), label.text);
  }

  const Picture& picture_;
  std::string body_;
  LabelRoom room_{Width, Height};
  double scale_ = 1.0;
  double x_ = 0.0;
  double y_ = 0.0;
};

}  // namespace

std::string WriteDrawing(const Picture& picture) {
  const double width = Width + (picture.things.empty() ? 0.0 : svg::TableWidth);
  std::string content = "\n";
  content += Element("rect", {{"width", "100%"}, {"height", "100%"}, {"fill", "#ffffff"}});
  if (picture.empty) {
    content += TextAt({Width / 2, Height / 2}, {{"text-anchor", "middle"}, {"font-size", "16"}},
                      picture.message);
  } else {
    content += Drawing(picture).Text();
  }
  content += svg::Table(picture, Width + 12.0, Height - 8.0);
  return Element("svg",
                 {{"xmlns", "http://www.w3.org/2000/svg"},
                  {"viewBox", "0 0 " + Number(width) + ' ' + Number(Height)},
                  {"width", Number(width)},
                  {"height", Number(Height)},
                  {"font-family", "sans-serif"},
                  {"font-size", "11"}},
                 content);
}

}  // namespace kelview
