/// compound_check FILE...: checks each file and lists its contents with sizes and hashes.
/// The exit status is 0 when all are valid, 1 otherwise.

#include <cstdio>
#include <fstream>

#include "tests/platform/compound_checker.h"
#include "tests/platform/compound_names.h"

int main(int argc, char** argv) {
  int status = argc < 2 ? 1 : 0;
  for (int i = 1; i < argc; ++i) {
    const compound::Findings findings = compound::CheckFile(argv[i]);
    std::ifstream file(argv[i], std::ios::binary);
    std::printf("%s: %s\n%s", argv[i], findings.Valid() ? "valid" : "NOT VALID",
                findings.Text().c_str());
    for (const compound::Entry& entry : findings.entries) {
      const unsigned long long size = entry.size;
      const unsigned long long hash = entry.type == compound::Stream ? Hash(file, entry) : 0;
      std::printf("%c %12llu %016llx %s\n", "?ds??r"[entry.type % 6], size, hash,
                  compound::Utf8(entry.path).c_str());
    }
    if (!findings.Valid()) status = 1;
  }
  return status;
}
