#include "examples/scene_host/scene.h"

namespace {

Mesh MakeFloor() {
  return {"Floor", 0, {-5, -5, 0, 5, -5, 0, 5, 5, 0, -5, 5, 0}, {0, 1, 2, 0, 2, 3}};
}

Mesh MakePyramid() {
  return {"Pyramid",
          1,
          {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, 0, 0, 2},
          {0, 1, 4, 1, 2, 4, 2, 3, 4, 3, 0, 4, 0, 2, 1, 0, 3, 2}};
}

Mesh MakeBox() {
  Mesh box = {"Box", 2, {}, {}};
  for (int corner = 0; corner < 8; ++corner) {
    for (int axis = 0; axis < 3; ++axis) {
      box.points.push_back((corner >> axis & 1) != 0 ? 1.0F : -1.0F);
    }
  }
  box.triangles = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                   2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};
  return box;
}

}  // namespace

Scene MakeScene() {
  return {"Still life",
          {MakeFloor(), MakePyramid(), MakeBox()},
          {{"Stone", 0.6F, 0.6F, 0.6F}, {"Sand", 0.9F, 0.8F, 0.5F}, {"Brick", 0.7F, 0.3F, 0.2F}},
          {"Ground", "Objects"}};
}
