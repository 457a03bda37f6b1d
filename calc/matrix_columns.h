#pragma once

#include "geometry/matrix.h"
#include "geometry/vector.h"

/// Column 0, 1 or 2 of `matrix`, the image of an axis; column 3 is the translation.
inline CyVector Column(const CyMatrix& matrix, int column) {
  return {matrix.m[0][column], matrix.m[1][column], matrix.m[2][column]};
}
