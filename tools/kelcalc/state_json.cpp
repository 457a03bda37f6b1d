#include "tools/kelcalc/state_json.h"

#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "calc/explain/alternatives.h"
#include "calc/interpreter.h"
#include "calc/object.h"
#include "tools/kelcalc/number_style.h"

namespace kelcalc {
namespace {

using Json = nlohmann::ordered_json;

Json NumberJson(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
  return number;
}

Json NumbersJson(const double* numbers, std::size_t count) {
  Json json = Json::array();
  for (std::size_t i = 0; i < count; ++i) json.push_back(NumberJson(numbers[i]));
  return json;
}

Json TextJson(std::string_view text) {
  Json json = text;
  try {
    static_cast<void>(json.dump());
    return json;
  } catch (const Json::type_error&) {  // no UTF-8
    json = Json::array();
    for (const char c : text) json.push_back(static_cast<unsigned char>(c));
    return json;
  }
}

Json ValueJson(const CaValue& value) {
  const std::vector<double> numbers = NumbersIn(value);
  switch (value.type) {
    case TypeNothing:
      return nullptr;
    case TypeInteger:
      return value.integer;
    case TypeString:
      return TextJson(value.text);
    case TypeReal:
      return NumberJson(value.real);
    case TypeMatrix: {
      Json rows = Json::array();
      for (std::size_t at = 0; at < numbers.size(); at += 4) {
        rows.push_back(NumbersJson(&numbers[at], 4));
      }
      return rows;
    }
    default:
      return NumbersJson(numbers.data(), numbers.size());
  }
}

Json EntriesJson(const CaList& list) {
  Json entries = Json::array();
  for (const CaListNode* node = list.tail; node != nullptr; node = node->previous) {
    const CaObject& entry = *node->payload;
    Json json;
    if (entry.Kind() == KindVariable) json["name"] = TextJson(entry.Name());
    json["type"] = TypeName(entry.Value()->type);
    json["value"] = ValueJson(*entry.Value());
    entries.push_back(std::move(json));
  }
  return entries;
}

}  // namespace

std::string StateJson(const CaInterpreter& interpreter) {
  Json state;
  state["stack"] = EntriesJson(interpreter.stack);
  state["variables"] = EntriesJson(interpreter.variables);
  return state.dump(2) + '\n';
}

}  // namespace kelcalc
