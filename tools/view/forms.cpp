#include "tools/view/forms.h"

#include "tools/view/writers.h"

namespace kelview {
namespace {

struct Form {
  std::string_view ending;
  std::string (*write)(const Picture&);
};

constexpr Form Forms[] = {
    {".svg", WriteDrawing},
    {".html", WritePage},
    {".glb", WriteModel},
};

const Form* FormOf(std::string_view path) {
  for (const Form& form : Forms) {
    if (path.ends_with(form.ending) && path.size() > form.ending.size()) return &form;
  }
  return nullptr;
}

}  // namespace

bool KnowsForm(std::string_view path) { return FormOf(path) != nullptr; }

std::string PictureBytes(const Picture& picture, std::string_view path) {
  return FormOf(path)->write(picture);
}

}  // namespace kelview
