#include "tools/view/picture_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

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

std::string Reason(int error) { return std::strerror(error); }

/// Makes a file that was not there before, beside `path`, and tells its name.
std::FILE* MakeBeside(const std::string& path, std::string& made) {
  for (int attempt = 0;; ++attempt) {
    made = path + "." + std::to_string(attempt) + ".partial";
    std::FILE* file = std::fopen(made.c_str(), "wbx");
    if (file != nullptr || errno != EEXIST || attempt == 999) return file;
  }
}

/// Where a link leads, because renaming would put the picture in the place of the link.
std::string Target(const std::string& path) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(path, error);
  return error ? path : target.string();
}

}  // namespace

bool KnowsForm(std::string_view path) { return FormOf(path) != nullptr; }

std::string WritePicture(const Picture& picture, const std::string& path) {
  const Form* form = FormOf(path);
  if (form == nullptr) return std::string("its name does not end in ") + KnownEndings;
  const std::string content = form->write(picture);
  const std::string target = Target(path);
  std::string partial;
  std::FILE* file = MakeBeside(target, partial);
  if (file == nullptr) return Reason(errno);
  const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size() &&
                       std::fflush(file) == 0;
  int error = written ? 0 : errno;
  if (std::fclose(file) != 0 && error == 0) error = errno;
  std::error_code renaming;
  if (error == 0) std::filesystem::rename(partial, target, renaming);
  if (error == 0 && !renaming) return "";
  std::remove(partial.c_str());
  return error != 0 ? Reason(error) : renaming.message();
}

}  // namespace kelview
