#include "tools/kelcalc/history.h"
#include "tools/kelcalc/line_editor.h"

namespace kelcalc {

std::unique_ptr<LineEditor> OpenScreenEditor(const History&, const Completer&) { return nullptr; }

}  // namespace kelcalc
