#include "tools/view/svg.h"

#include <algorithm>

#include "tools/view/text.h"

namespace kelview::svg {

std::string Element(std::string_view name, const std::vector<Attribute>& attributes,
                    std::string_view content) {
  std::string text = "<";
  text += name;
  for (const Attribute& attribute : attributes) {
    text += ' ';
    text += attribute.name;
    text += "=\"";
    text += attribute.value;
    text += '"';
  }
  if (content.empty()) return text += "/>\n";
  text += '>';
  text += content;
  text += "</";
  text += name;
  return text += ">\n";
}

std::string TextAt(const Spot& spot, std::vector<Attribute> style, std::string_view text) {
  style.insert(style.begin(), {{"x", Number(spot.x)}, {"y", Number(spot.y)}});
  return Element("text", style, EscapeMarkup(text));
}

std::string Number(double number) { return FixedText(number, 2); }

std::string Points(const std::vector<Spot>& spots) {
  std::string text;
  for (const Spot& spot : spots) {
    if (!text.empty()) text += ' ';
    text += Number(spot.x);
    text += ',';
    text += Number(spot.y);
  }
  return text;
}

std::size_t CharacterCount(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace kelview::svg
