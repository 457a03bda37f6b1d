#include "tools/kelcalc/picture.h"

#include <algorithm>

#include "calc/interpreter.h"
#include "calc/object.h"
#include "tools/kelcalc/file_writing.h"
#include "tools/kelcalc/number_style.h"
#include "tools/kelcalc/viewer.h"
#include "tools/view/forms.h"
#include "tools/view/picture.h"

namespace kelcalc {
namespace {

constexpr int Digits = 6;

std::vector<kelview::NamedValue> NamedValues(const CaInterpreter& interpreter) {
  std::vector<kelview::NamedValue> values;
  for (const CaListNode* node = interpreter.variables.tail; node != nullptr;
       node = node->previous) {
    const CaValue& value = *node->payload->Value();
    values.push_back({node->payload->Name(), &value, ValueText(value, Digits)});
  }
  int position = interpreter.Depth();
  for (const CaListNode* node = interpreter.stack.tail; node != nullptr; node = node->previous) {
    const CaValue& value = *node->payload->Value();
    std::string name = "stack " + std::to_string(--position);
    if (const char* variable = node->payload->Name(); variable != nullptr) {
      name += std::string(" (") + variable + ')';
    }
    values.push_back({std::move(name), &value, ValueText(value, Digits)});
  }
  return values;
}

}  // namespace

std::string WritePictures(const CaInterpreter& interpreter, const std::vector<std::string>& files,
                          const std::string& from) {
  CyVector start;
  if (!from.empty()) {
    const CaValue& value = *interpreter.FindVariable(from.c_str());
    if (value.type != TypePoint) return "no point is called " + from;
    start = value.point;
  }
  const kelview::Picture picture = kelview::DescribePicture(NamedValues(interpreter), start);
  std::string complaint;
  for (const std::string& file : files) {
    std::string reason = std::string("its name does not end in ") + kelview::KnownEndings;
    if (kelview::KnowsForm(file)) reason = WriteFile(file, kelview::PictureBytes(picture, file));
    if (reason.empty() || !complaint.empty()) continue;
    complaint.append("cannot write ").append(file).append(": ").append(reason);
  }
  return complaint;
}

std::string ShowPicture(const CaInterpreter& interpreter, const std::string& from) {
  static const std::string Folder = MakePrivateFolder();  // one for all pictures of a session
  if (Folder.empty()) return "there is no folder for temporary files";
  const std::string file = Folder + "/picture.html";
  std::string problem = WritePictures(interpreter, {file}, from);
  if (!problem.empty()) return problem;
  return (OpenViewer(file) ? "showing " : "the picture is in ") + file;
}

}  // namespace kelcalc
