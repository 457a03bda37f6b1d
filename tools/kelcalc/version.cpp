#include "tools/kelcalc/version.h"

#include "kelcalc_commit.h"  // made at each build

namespace kelcalc {

const char* const VersionText = KEL_VERSION KEL_COMMIT;

}  // namespace kelcalc
