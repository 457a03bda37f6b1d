// Fuzz target: any bytes as a compound file that is opened and read to its end, twice: in order,
// and backwards through a clone. Both must tell the same.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "save/kelsave_files.h"
#include "tests/platform/read_storage.h"

namespace {

constexpr std::size_t Most = 20000;  // bytes of a stream: many streams may claim the same sectors

void Require(bool good) {
  if (!good) std::abort();
}

/// Reads a stream from its end to its beginning through a clone; what `element` has must be there.
void ReadBackwards(IStorage* root, const ReadElement& element) {
  IStream* clone = nullptr;
  Require(SUCCEEDED(kel::OpenStream(*root, element.name)->Clone(&clone)));
  constexpr std::size_t piece = 700;
  char bytes[piece];
  for (std::size_t end = element.bytes.size(); end > 0;) {
    const std::size_t begin = end - std::min(end, piece);
    LARGE_INTEGER to;
    ULONG got = 0;
    to.QuadPart = static_cast<LONGLONG>(begin);
    Require(SUCCEEDED(clone->Seek(to, STREAM_SEEK_SET, nullptr)));
    Require(SUCCEEDED(clone->Read(bytes, static_cast<ULONG>(end - begin), &got)));
    Require(got == end - begin && element.bytes.compare(begin, got, bytes, got) == 0);
    end = begin;
  }
  clone->Release();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = memfd_create("fuzz", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  Require(ftruncate(file, 0) == 0 && pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
  HRESULT result = S_OK;
  IStorage* root = OpenForReading(path, &result);
  Require((root != nullptr) == SUCCEEDED(result));
  if (root == nullptr) return 0;
  for (const ReadElement& element : ReadAll(root, Most)) {
    Require(element.result == S_OK || element.result == STG_E_DOCFILECORRUPT);
    const bool inRoot = element.parent == 0 && element.stat.type == STGTY_STREAM;
    if (inRoot) ReadBackwards(root, element);
  }
  root->Release();
  return 0;
}
