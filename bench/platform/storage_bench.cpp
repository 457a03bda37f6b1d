// Times the writing of compound files against bare write(2) loops and, where it was found when
// this was built, libgsf's writer. Prints the median of several rounds, in which all take turns.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/storage.h"

#ifdef KEL_HAVE_GSF
#include <gsf/gsf.h>
#endif

namespace {

constexpr DWORD Mode = STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;

/// `storages` storages with `streams` streams each, every one of `writes` writes of `size` bytes.
/// With one storage the streams lie in the root.
struct Shape {
  const char* what;
  int storages;
  int streams;
  int writes;
  ULONG size;
  bool withGsf;
  int rounds;
};

constexpr Shape Shapes[] = {
    {"1 GiB in writes of 64 KiB", 1, 1, 16384, 65536, true, 7},
    {"10,000 streams of 1 KiB", 1, 10000, 1, 1024, true, 7},
    {"100,000 streams of 32 bytes", 100, 1000, 1, 32, true, 7},
    {"the same, a storage for each", 100000, 1, 1, 32, false, 7},
};

std::vector<char> bytes(65536, 'x');
std::string fileName;

[[noreturn]] void Stop(const char* what) {
  std::fprintf(stderr, "storage_bench: %s failed\n", what);
  std::exit(1);
}

void Expect(bool good, const char* what) {
  if (!good) Stop(what);
}

/// Writes "Stream123" and the like without the cost of a general formatter.
template <class Character>
const Character* Name(Character* name, char first, int number) {
  Character* to = name;
  *to++ = static_cast<Character>(first);
  for (int digit = 100000; digit > 0; digit /= 10) {
    *to++ = static_cast<Character>('0' + number / digit % 10);
  }
  *to = 0;
  return name;
}

void WriteCompound(const Shape& shape) {
  const std::wstring wide(fileName.begin(), fileName.end());
  STGOPTIONS options = {1, 0, 4096, nullptr};
  void* object = nullptr;
  Expect(SUCCEEDED(StgCreateStorageEx(wide.c_str(), Mode, STGFMT_DOCFILE, 0, &options, nullptr,
                                      IID_IStorage, &object)),
         "creating");
  auto* root = static_cast<IStorage*>(object);
  wchar_t name[16];
  for (int s = 0; s < shape.storages; ++s) {
    IStorage* storage = root;
    if (shape.storages > 1) {
      Expect(SUCCEEDED(root->CreateStorage(Name(name, 'F', s), Mode, 0, 0, &storage)), "storage");
    }
    for (int i = 0; i < shape.streams; ++i) {
      IStream* stream = nullptr;
      Expect(SUCCEEDED(storage->CreateStream(Name(name, 'S', i), Mode, 0, 0, &stream)), "stream");
      for (int w = 0; w < shape.writes; ++w) {
        Expect(SUCCEEDED(stream->Write(bytes.data(), shape.size, nullptr)), "writing");
      }
      stream->Release();
    }
    if (storage != root) storage->Release();
  }
  root->Release();
}

void WritePlain(const Shape& shape) {
  const int file = open(fileName.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  const int count = shape.storages * shape.streams * shape.writes;
  for (int i = 0; i < count; ++i) {
    Expect(write(file, bytes.data(), shape.size) == static_cast<ssize_t>(shape.size), "write");
  }
  close(file);
}

#ifdef KEL_HAVE_GSF
void WriteGsf(const Shape& shape) {
  GsfOutput* file = gsf_output_stdio_new(fileName.c_str(), nullptr);
  GsfOutfile* root = gsf_outfile_msole_new_full(file, 4096, 64);
  char name[16];
  for (int s = 0; s < shape.storages; ++s) {
    GsfOutput* storage = GSF_OUTPUT(root);
    if (shape.storages > 1) storage = gsf_outfile_new_child(root, Name(name, 'F', s), TRUE);
    for (int i = 0; i < shape.streams; ++i) {
      GsfOutput* stream = gsf_outfile_new_child(GSF_OUTFILE(storage), Name(name, 'S', i), FALSE);
      for (int w = 0; w < shape.writes; ++w) {
        gsf_output_write(stream, shape.size, reinterpret_cast<const guint8*>(bytes.data()));
      }
      gsf_output_close(stream);
      g_object_unref(stream);
    }
    if (storage != GSF_OUTPUT(root)) {
      gsf_output_close(storage);
      g_object_unref(storage);
    }
  }
  gsf_output_close(GSF_OUTPUT(root));
  g_object_unref(root);
  g_object_unref(file);
}
#endif

double Seconds(void (*writer)(const Shape&), const Shape& shape) {
  unlink(fileName.c_str());
  sync();  // what the file before leaves to the journal is not this one's cost
  const auto begin = std::chrono::steady_clock::now();
  writer(shape);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double Median(std::vector<double>& times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

void Compare(const Shape& shape) {
  std::vector<double> compoundTimes;
  std::vector<double> plainTimes;
  double gsf = 1e9;
  for (int round = 0; round < shape.rounds; ++round) {
    // Who goes first changes, so that neither always finds what the other left.
    if (round % 2 == 0) compoundTimes.push_back(Seconds(WriteCompound, shape));
    plainTimes.push_back(Seconds(WritePlain, shape));
    if (round % 2 != 0) compoundTimes.push_back(Seconds(WriteCompound, shape));
#ifdef KEL_HAVE_GSF
    // Its slowest shape takes too long for more than one round; its best time counts.
    if (shape.withGsf && (round == 0 || shape.streams == 1)) {
      gsf = std::min(gsf, Seconds(WriteGsf, shape));
    }
#endif
  }
  const double compound = Median(compoundTimes);
  const double plain = Median(plainTimes);
  unlink(fileName.c_str());
  std::printf("%-30s %8.1f ms   write(2) %8.1f ms, ratio %.2f", shape.what, compound * 1e3,
              plain * 1e3, compound / plain);
  if (gsf < 1e9) std::printf("   libgsf %8.1f ms, ratio %.3f", gsf * 1e3, compound / gsf);
  std::printf("\n");
}

}  // namespace

/// storage_bench [FOLDER]: runs all measures. storage_bench FOLDER N: writes N small streams once,
/// for counting instructions.
int main(int argc, char** argv) {
  fileName = std::string(argc > 1 ? argv[1] : ".") + "/storage_bench.tmp";
#ifdef KEL_HAVE_GSF
  gsf_init();
#endif
  if (argc > 2) {
    WriteCompound({"", 1, std::atoi(argv[2]), 1, 32, false, 1});
    unlink(fileName.c_str());
    return 0;
  }
  for (const Shape& shape : Shapes) Compare(shape);
  return 0;
}
