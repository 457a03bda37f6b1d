#include "tools/view/fit.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <string>

#include "calc/character_source.h"
#include "calc/numbers.h"

namespace kelview {
namespace {

constexpr double WidestGap = 100.0;
constexpr double OriginNear = 3.0;       // the origin is shown within so many extents
constexpr double FinestPart = 1e-12;     // of a coordinate that doubles still tell apart
constexpr double SmallestUnit = 1e-303;  // what is smaller yet is drawn, but not enlarged

/// The longest side of the box around the origin that reaches `v`: no square, so no overflow.
double Farthest(const CyVector& v) {
  return std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
}

double Median(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>((numbers.size() - 1) / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

/// The place in the midst of most things, wherever a few others are.
CyVector Midst(const std::vector<Reach>& things) {
  std::vector<double> x, y, z;
  for (const Reach& reach : things) {
    if (reach.empty()) continue;
    x.push_back(reach.back().x);
    y.push_back(reach.back().y);
    z.push_back(reach.back().z);
  }
  return {Median(x), Median(y), Median(z)};
}

std::vector<bool> FindTooFar(const std::vector<Reach>& things) {
  std::vector<bool> tooFar(things.size(), false);
  std::vector<double> distance(things.size(), 0.0);
  std::vector<std::size_t> order;
  const CyVector midst = Midst(things);
  for (std::size_t i = 0; i < things.size(); ++i) {
    if (things[i].empty()) continue;
    for (const CyVector& place : things[i]) {
      distance[i] = std::max(distance[i], Farthest(place - midst));
    }
    order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return distance[a] < distance[b]; });
  std::size_t kept = order.size() - order.size() / 4;
  while (kept < order.size()) {
    const double extent = distance[order[kept - 1]];
    if (extent > 0.0 && distance[order[kept]] / WidestGap > extent) break;
    ++kept;
  }
  for (std::size_t i = kept; i < order.size(); ++i) tooFar[order[i]] = true;
  return tooFar;
}

struct Box {
  CyVector low;
  CyVector high;

  void Take(const CyVector& place) {
    low.Set(std::min(low.x, place.x), std::min(low.y, place.y), std::min(low.z, place.z));
    high.Set(std::max(high.x, place.x), std::max(high.y, place.y), std::max(high.z, place.z));
  }
  double Half() const { return Farthest(high / 2 - low / 2); }
  CyVector Middle() const { return low / 2 + high / 2; }
};

Box BoxAround(const std::vector<Reach>& things, const std::vector<bool>& tooFar) {
  Box box;
  bool first = true;
  for (std::size_t i = 0; i < things.size(); ++i) {
    if (tooFar[i]) continue;
    for (const CyVector& place : things[i]) {
      if (first) box = {place, place};
      first = false;
      box.Take(place);
    }
  }
  return box;
}

/// The exponent of the greatest power of ten that is not above `number`.
int DecimalExponent(double number) {
  char text[48];
  const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::scientific);
  const char* e = std::find(text, end.ptr, 'e');
  int exponent = 0;
  std::from_chars(e[1] == '+' ? e + 2 : e + 1, end.ptr, exponent);
  return exponent;
}

/// Read as a text, so that every machine has the same one.
double PowerOfTen(int exponent) {
  const std::string text = "1e" + std::to_string(exponent);
  CaCharacterSource source(text);
  double power = 1.0;
  ReadUnsigned(source, power);
  return power;
}

}  // namespace

double GridStep(double length) {
  const double power = PowerOfTen(DecimalExponent(length) - 1);
  for (const double step : {1.0, 2.0, 5.0}) {
    if (length / (step * power) <= 10.5) return step * power;
  }
  return 10.0 * power;
}

Fit FitView(const std::vector<Reach>& things) {
  Fit fit;
  if (std::all_of(things.begin(), things.end(), [](const Reach& reach) { return reach.empty(); })) {
    fit.tooFar.assign(things.size(), false);
    return fit;
  }
  fit.tooFar = FindTooFar(things);
  Box box = BoxAround(things, fit.tooFar);
  double half = box.Half();
  fit.originShown = half == 0.0 || Farthest(box.Middle()) / OriginNear <= half;
  if (fit.originShown) box.Take({});
  half = std::max({box.Half(), Farthest(box.Middle()) * FinestPart});
  if (half == 0.0) half = 1.0;

  fit.unit = std::max(PowerOfTen(DecimalExponent(half)), SmallestUnit);
  fit.half = half / fit.unit;
  if (!fit.originShown) {
    const double step = GridStep(2.0 * fit.half) * fit.unit;
    const auto onGrid = [step](double c) { return std::nearbyint(c / step) * step; };
    const CyVector middle = box.Middle();
    fit.centre = {onGrid(middle.x), onGrid(middle.y), onGrid(middle.z)};
    fit.pivot = fit.ToPicture(middle);
  }
  return fit;
}

}  // namespace kelview
