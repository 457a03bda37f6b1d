#include <algorithm>
#include <initializer_list>

#include "calc/api/conversion.h"
#include "calc/object.h"

namespace kel {
namespace {

Value Make(Type type, std::initializer_list<double> numbers) {
  Value value;
  value.type = type;
  std::copy(numbers.begin(), numbers.end(), value.numbers.begin());
  return value;
}

Value OfVector(Type type, const CyVector& v) { return Make(type, {v.x, v.y, v.z}); }

}  // namespace

Value Value::Integer(std::int32_t integer) {
  Value value;
  value.type = Type::Integer;
  value.integer = integer;
  return value;
}

Value Value::Text(std::string_view text) {
  Value value;
  value.type = Type::Text;
  value.text = text.substr(0, text.find('\0'));
  return value;
}

Value Value::Real(double number) { return Make(Type::Real, {number}); }
Value Value::Vector(double x, double y, double z) { return Make(Type::Vector, {x, y, z}); }
Value Value::Point(double x, double y, double z) { return Make(Type::Point, {x, y, z}); }
Value Value::Scale(double x, double y, double z) { return Make(Type::Scale, {x, y, z}); }

Value Value::Matrix(const std::array<double, 12>& rows) {
  Value value;
  value.type = Type::Matrix;
  value.numbers = rows;
  return value;
}

Value Value::Quaternion(double w, double x, double y, double z) {
  return Make(Type::Quaternion, {w, x, y, z});
}

Value Value::Rotation(double x, double y, double z, double degrees) {
  return Make(Type::Rotation, {x, y, z, degrees});
}

std::size_t Value::Count() const {
  static constexpr std::size_t Counts[] = {0, 0, 0, 1, 3, 3, 12, 4, 4, 3};
  return Counts[static_cast<std::size_t>(type)];
}

bool operator==(const Value& a, const Value& b) {
  return a.type == b.type && a.integer == b.integer && a.text == b.text && a.numbers == b.numbers;
}

Value FromEngine(const CaValue& source) {
  switch (source.type) {
    case TypeInteger:
      return Value::Integer(source.integer);
    case TypeString:
      return Value::Text(source.text == nullptr ? "" : source.text);
    case TypeReal:
      return Value::Real(source.real);
    case TypeVector:
      return OfVector(Type::Vector, source.vector);
    case TypePoint:
      return OfVector(Type::Point, source.point);
    case TypeScale:
      return OfVector(Type::Scale, source.scale);
    case TypeQuaternion: {
      const CyQuaternion& q = source.quaternion;
      return Value::Quaternion(q.w, q.v.x, q.v.y, q.v.z);
    }
    case TypeRotation: {
      const CyRotation& r = source.rotation;
      return Value::Rotation(r.axis.x, r.axis.y, r.axis.z, r.angle);
    }
    case TypeMatrix: {
      std::array<double, 12> rows;
      for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = source.matrix.m[i / 4][i % 4];
      return Value::Matrix(rows);
    }
    default:
      return {};
  }
}

CaValue ToEngine(const Value& value) {
  const std::array<double, 12>& n = value.numbers;
  switch (value.type) {
    case Type::Integer:
      return CaValue(value.integer);
    case Type::Text:
      return CaValue(value.text.c_str());
    case Type::Real:
      return CaValue(n[0]);
    case Type::Vector:
      return CaValue(TypeVector, CyVector(n[0], n[1], n[2]));
    case Type::Point:
      return CaValue(TypePoint, CyVector(n[0], n[1], n[2]));
    case Type::Scale:
      return CaValue(TypeScale, CyVector(n[0], n[1], n[2]));
    case Type::Quaternion:
      return CaValue(CyQuaternion(n[0], CyVector(n[1], n[2], n[3])));
    case Type::Rotation:
      return CaValue(CyRotation(CyVector(n[0], n[1], n[2]), n[3]));
    case Type::Matrix: {
      CyMatrix matrix;
      matrix.SetCol0(n[0], n[4], n[8]);
      matrix.SetCol1(n[1], n[5], n[9]);
      matrix.SetCol2(n[2], n[6], n[10]);
      matrix.SetTrans(CyVector(n[3], n[7], n[11]));
      return CaValue(matrix);
    }
    default:
      return {};
  }
}

}  // namespace kel
