#include "geometry/vector.h"

#include <type_traits>

static_assert(std::is_trivially_copyable_v<CyVector> && sizeof(CyVector) == 24);

CyVector PerpVec(CyVector a) noexcept {
  CyVector t(1.0, 0.0, 0.0);
  if (Cross(t, a).Mag() < CyLengthThreshold) t.Set(0.0, 1.0, 0.0);
  return t.CrossSelf(a).Normalize();
}
