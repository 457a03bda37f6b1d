#include "tools/view/drawing_table.h"

#include <cstddef>
#include <string>
#include <vector>

#include "tools/view/ink.h"
#include "tools/view/svg.h"
#include "tools/view/text.h"

namespace kelview::svg {
namespace {

constexpr double RowHeight = 15.0;
constexpr double RowGap = 5.0;
constexpr double Indent = 14.0;
constexpr std::size_t LongestLine = 50;  // characters
constexpr std::size_t LongestName = 20;

/// At most `count` characters of `text`.
std::string Shortened(const std::string& text, std::size_t count) {
  if (CharacterCount(text) <= count) return text;
  std::size_t end = 0;
  for (std::size_t seen = 0; end < text.size(); ++end) {
    if ((text[end] & 0xC0) != 0x80 && seen++ == count - 1) break;
  }
  return text.substr(0, end) + "…";
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    lines.push_back(Shortened(text.substr(start, end - start), LongestLine));
    start = end + 1;
  }
  return lines;
}

std::string Told(const Thing& thing) {
  std::string told = thing.type;
  if (!thing.note.empty()) told += "; " + thing.note;
  if (!thing.drawn) told += thing.note.empty() ? "; not drawn" : ", not drawn";
  return told;
}

class Rows {
 public:
  explicit Rows(double left) : left_(left) {}

  double Height(const std::vector<std::string>& lines) const {
    return static_cast<double>(lines.size() + 1) * RowHeight + RowGap;
  }

  double Bottom() const { return y_; }

  void Row(const Thing& thing, const std::vector<std::string>& lines) {
    const std::string colour = Colours(thing.ink).light;
    text += Element("circle", {{"cx", Number(left_ + 4)},
                               {"cy", Number(y_ - 4)},
                               {"r", "4"},
                               {"stroke", colour},
                               {"fill", thing.drawn ? colour : "none"}});
    const std::string name = Shortened(thing.name, LongestName);
    text += Element("text", {{"x", Number(left_ + Indent)}, {"y", Number(y_)}},
                    Element("tspan", {{"font-weight", "bold"}}, EscapeMarkup(name)) +
                        Element("tspan", {{"dx", "8"}, {"fill", Colours(Ink::Text).light}},
                                EscapeMarkup(Told(thing))));
    y_ += RowHeight;
    for (const std::string& line : lines) {
      Line(Indent, {{"font-family", "monospace"}, {"xml:space", "preserve"}}, line);
    }
    y_ += RowGap;
  }

  void More(std::size_t count) {
    Line(0.0, {{"fill", Colours(Ink::Text).light}}, "and " + std::to_string(count) + " more");
  }

  std::string text;

 private:
  void Line(double indent, std::vector<Attribute> style, const std::string& line) {
    text += TextAt({left_ + indent, y_}, std::move(style), line);
    y_ += RowHeight;
  }

  double left_;
  double y_ = 28.0;
};

}  // namespace

std::string Table(const Picture& picture, double left, double height) {
  Rows rows(left);
  for (std::size_t i = 0; i < picture.things.size(); ++i) {
    const std::vector<std::string> lines = LinesOf(picture.things[i].text);
    const bool last = i + 1 == picture.things.size();
    if (rows.Bottom() + rows.Height(lines) > height - (last ? 0.0 : RowHeight)) {
      rows.More(picture.things.size() - i);
      break;
    }
    rows.Row(picture.things[i], lines);
  }
  return rows.text;
}

}  // namespace kelview::svg
