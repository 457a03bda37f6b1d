#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tools/view/ink.h"
#include "tools/view/page_parts.h"
#include "tools/view/writers.h"

namespace kelview {
namespace {

using nlohmann::ordered_json;

constexpr const char* PenNames[] = {"thin", "strong", "dashed", "filled"};

/// A billionth of a unit is finer than any screen; the texts stay short.
double Rounded(double number) { return std::nearbyint(number * 1e9) / 1e9 + 0.0; }

ordered_json Coordinates(const CyVector& v) { return {Rounded(v.x), Rounded(v.y), Rounded(v.z)}; }

ordered_json LineOf(const Stroke& stroke) {
  ordered_json line = ordered_json::array();
  for (const CyVector& place : stroke.line) {
    for (const double c : {place.x, place.y, place.z}) line.push_back(Rounded(c));
  }
  return line;
}

std::string PictureData(const Picture& picture) {
  ordered_json data;
  data["message"] = picture.message;
  data["middle"] = Coordinates(picture.middle);
  data["radius"] = Rounded(picture.radius);
  data["inks"] = ordered_json::array();
  for (const InkColours& ink : Inks) data["inks"].push_back(ink.name);
  for (const char* list : {"things", "strokes", "dots", "labels"}) {
    data[list] = ordered_json::array();
  }
  for (const Thing& thing : picture.things) {
    data["things"].push_back({{"name", thing.name},
                              {"type", thing.type},
                              {"text", thing.text},
                              {"note", thing.note},
                              {"drawn", thing.drawn},
                              {"ink", thing.ink},
                              {"at", Coordinates(thing.at)}});
  }
  for (const Stroke& stroke : picture.strokes) {
    data["strokes"].push_back({{"thing", stroke.thing},
                               {"ink", stroke.ink},
                               {"pen", PenNames[static_cast<std::size_t>(stroke.pen)]},
                               {"arrow", stroke.arrow},
                               {"level", Level(stroke)},
                               {"line", LineOf(stroke)}});
  }
  for (const Mark& dot : picture.dots) {
    data["dots"].push_back(
        {dot.thing, dot.ink, Rounded(dot.at.x), Rounded(dot.at.y), Rounded(dot.at.z)});
  }
  for (const Label& label : picture.labels) {
    data["labels"].push_back({label.thing, label.ink, label.text, Rounded(label.at.x),
                              Rounded(label.at.y), Rounded(label.at.z), label.size});
  }
  return data.dump();
}

/// JSON with nothing in it that ends the element around it.
std::string InsideScript(std::string json) {
  for (std::size_t at = 0; (at = json.find('<', at)) != std::string::npos; ++at) {
    json.replace(at, 1, "\\u003c");
  }
  return json;
}

std::string InkVariables(const char* InkColours::*colour) {
  std::string text;
  for (const InkColours& ink : Inks) {
    text.append("  --").append(ink.name).append(": ").append(ink.*colour).append(";\n");
  }
  return text;
}

/// What is dark: by the system's wish unless the reader said light, or because the reader said so.
std::string DarkTheme() {
  const std::string variables =
      "{\n  color-scheme: dark;\n  --is-dark: 1;\n  --paper: #14171b;\n  --panel: #1c2026;\n"
      "  --edge: #343a43;\n  --accent: #5aaef5;\n" +
      InkVariables(&InkColours::dark) + "}\n";
  return "@media (prefers-color-scheme: dark) { :root:not([data-theme=\"light\"]) " + variables +
         "}\n:root[data-theme=\"dark\"] " + variables;
}

std::string Replaced(std::string_view text, std::string_view mark, std::string_view content) {
  const std::size_t at = text.find(mark);
  std::string replaced(text.substr(0, at));
  replaced += content;
  return replaced += text.substr(at + mark.size());
}

}  // namespace

std::string WritePage(const Picture& picture) {
  const std::string light = Replaced(PageStyle, "@LIGHT_INKS@", InkVariables(&InkColours::light));
  std::string page = Replaced(PageMarkup, "@STYLE@", Replaced(light, "@DARK_THEME@", DarkTheme()));
  page = Replaced(page, "@SCRIPT@", PageScript);
  return Replaced(page, "@PICTURE@", InsideScript(PictureData(picture)));
}

}  // namespace kelview
