#include "calc/value_print.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "calc/numbers.h"
#include "calc/object.h"

namespace {

/// Text that is put together before it is written at once.
template <std::size_t Numbers>
class Line {
 public:
  Line() {}  // NOLINT: leaves the text as it is, which would otherwise be cleared
  Line& Text(const char* text) {
    const std::size_t length = std::strlen(text);
    std::memcpy(end_, text, length);
    end_ += length;
    return *this;
  }

  Line& Real(double number) {
    end_ = WriteFixed(end_, number, 6, 0);
    return *this;
  }

  Line& Reals(const CyVector& v) { return Real(v.x).Text(", ").Real(v.y).Text(", ").Real(v.z); }

  /// Four elements of a matrix.
  Line& Row(const double (&row)[4]) {
    for (int column = 0; column < 4; ++column) {
      if (column > 0) Text(",");
      end_ = WriteFixed(end_, row[column], 3, 10);
    }
    return *this;
  }

  void WriteTo(std::FILE* stream) const {
    std::fwrite(text_, 1, static_cast<std::size_t>(end_ - text_), stream);
  }

 private:
  char text_[Numbers * LongestFixed + 32];
  char* end_ = text_;
};

void PrintInteger(std::FILE* stream, std::int32_t integer) {
  char digits[std::numeric_limits<std::int32_t>::digits10 + 3] = {};
  std::to_chars(digits, digits + sizeof digits, integer);
  Line<1>().Text(" ").Text(digits).Text("\n").WriteTo(stream);
}

void PrintString(std::FILE* stream, const char* text) {
  std::fputs(" \"", stream);
  std::fputs(text, stream);
  std::fputs("\"\n", stream);
}

void PrintVector(std::FILE* stream, const char* opening, const CyVector& v) {
  Line<3>().Text(opening).Reals(v).Text(")\n").WriteTo(stream);
}

void PrintMatrix(std::FILE* stream, const CyMatrix& matrix) {
  Line<12>()
      .Text(" m(")
      .Row(matrix.m[0])
      .Text("\n   ")
      .Row(matrix.m[1])
      .Text("\n   ")
      .Row(matrix.m[2])
      .Text(")\n")
      .WriteTo(stream);
}

void PrintQuaternion(std::FILE* stream, const CyQuaternion& q) {
  Line<4>().Text(" q(").Real(q.w).Text(",   ").Reals(q.v).Text(")\n").WriteTo(stream);
}

void PrintRotation(std::FILE* stream, const CyRotation& r) {
  Line<4>().Text(" r(").Reals(r.axis).Text(",   ").Real(r.angle).Text(")\n").WriteTo(stream);
}

}  // namespace

void PrintValue(std::FILE* stream, const CaValue& value) {
  switch (value.type) {
    case TypeInteger:
      return PrintInteger(stream, value.integer);
    case TypeString:
      return PrintString(stream, value.text);
    case TypeReal:
      return Line<1>().Text(" ").Real(value.real).Text("\n").WriteTo(stream);
    case TypeVector:
      return PrintVector(stream, " v(", value.vector);
    case TypePoint:
      return PrintVector(stream, " p(", value.point);
    case TypeMatrix:
      return PrintMatrix(stream, value.matrix);
    case TypeQuaternion:
      return PrintQuaternion(stream, value.quaternion);
    case TypeRotation:
      return PrintRotation(stream, value.rotation);
    case TypeScale:
      return PrintVector(stream, " s(", value.scale);
    default:
      return;
  }
}
