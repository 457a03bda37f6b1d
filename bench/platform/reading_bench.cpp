// Times the reading of compound files against bare read(2) loops and libgsf's reader. Prints the
// median of several rounds, in which all take turns; the files are in the system's memory by then.
#include <fcntl.h>
#include <gsf/gsf.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "platform/storage.h"

namespace {

constexpr DWORD Reading = STGM_READ | STGM_SHARE_DENY_WRITE;
constexpr DWORD Element = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD Writing = STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr ULONG Piece = 65536;
constexpr int Rounds = 7;

std::vector<char> bytes(Piece, 'x');
std::string folder;

void Expect(bool good, const char* what) {
  if (good) return;
  std::fprintf(stderr, "reading_bench: %s failed\n", what);
  std::exit(1);
}

std::string Path(const char* name) { return folder + "/reading_bench." + name; }

std::wstring Wide(const std::string& text) { return {text.begin(), text.end()}; }

// --- What is read ---

/// `storages` storages of `streams` streams each, of `pieces` pieces of `size` bytes. One storage
/// is the root.
struct Shape {
  const char* name;
  ULONG sectorSize;
  int storages;
  int streams;
  int pieces;
  ULONG size;
};

constexpr Shape Large4 = {"large4", 4096, 1, 1, 16384, Piece};
constexpr Shape Large3 = {"large3", 512, 1, 1, 16384, Piece};
constexpr Shape Short4 = {"short4", 4096, 1, 1, 16, Piece};
constexpr Shape Many = {"many", 4096, 100, 1000, 1, 32};

void Write(const Shape& shape) {
  STGOPTIONS options = {1, 0, shape.sectorSize, nullptr};
  void* object = nullptr;
  Expect(SUCCEEDED(StgCreateStorageEx(Wide(Path(shape.name)).c_str(), Writing, STGFMT_DOCFILE, 0,
                                      &options, nullptr, IID_IStorage, &object)),
         "creating");
  auto* root = static_cast<IStorage*>(object);
  for (int s = 0; s < shape.storages; ++s) {
    IStorage* storage = root;
    if (shape.storages > 1) {
      Expect(SUCCEEDED(
                 root->CreateStorage((L"F" + std::to_wstring(s)).c_str(), Writing, 0, 0, &storage)),
             "storage");
    }
    for (int i = 0; i < shape.streams; ++i) {
      IStream* stream = nullptr;
      Expect(SUCCEEDED(storage->CreateStream((L"S" + std::to_wstring(i)).c_str(), Writing, 0, 0,
                                             &stream)),
             "stream");
      for (int p = 0; p < shape.pieces; ++p) stream->Write(bytes.data(), shape.size, nullptr);
      stream->Release();
    }
    if (storage != root) storage->Release();
  }
  root->Release();
}

// --- Readers ---

IStorage* Open(const Shape& shape) {
  IStorage* root = nullptr;
  Expect(SUCCEEDED(
             StgOpenStorage(Wide(Path(shape.name)).c_str(), nullptr, Reading, nullptr, 0, &root)),
         "opening");
  return root;
}

/// Opens every stream by its name and reads it once.
void ReadStreams(IStorage* storage) {
  IEnumSTATSTG* list = nullptr;
  Expect(SUCCEEDED(storage->EnumElements(0, nullptr, 0, &list)), "listing");
  STATSTG stat;
  while (list->Next(1, &stat, nullptr) == S_OK) {
    if (stat.type == STGTY_STORAGE) {
      IStorage* inner = nullptr;
      Expect(SUCCEEDED(storage->OpenStorage(stat.pwcsName, nullptr, Element, nullptr, 0, &inner)),
             "storage");
      ReadStreams(inner);
      inner->Release();
    } else {
      IStream* stream = nullptr;
      Expect(SUCCEEDED(storage->OpenStream(stat.pwcsName, nullptr, Element, 0, &stream)), "stream");
      ULONGLONG left = stat.cbSize.QuadPart;
      for (ULONG got = 0; left > 0; left -= got) {
        Expect(SUCCEEDED(stream->Read(bytes.data(), Piece, &got)) && got > 0, "reading");
      }
      stream->Release();
    }
    CoTaskMemFree(stat.pwcsName);
  }
  list->Release();
}

void ReadCompound(const Shape& shape) {
  IStorage* root = Open(shape);
  ReadStreams(root);
  root->Release();
}

/// The same bytes of the same file: its one stream begins behind the header.
void ReadPlain(const Shape& shape) {
  const int file = open(Path(shape.name).c_str(), O_RDONLY | O_CLOEXEC);
  lseek(file, static_cast<off_t>(shape.sectorSize), SEEK_SET);
  for (int p = 0; p < shape.pieces; ++p) {
    Expect(read(file, bytes.data(), Piece) == static_cast<ssize_t>(Piece), "read");
  }
  close(file);
}

void ReadGsf(GsfInfile* storage) {
  for (int i = 0; i < gsf_infile_num_children(storage); ++i) {
    GsfInput* child = gsf_infile_child_by_index(storage, i);
    Expect(child != nullptr, "libgsf");
    if (GSF_IS_INFILE(child) && gsf_infile_num_children(GSF_INFILE(child)) >= 0) {
      ReadGsf(GSF_INFILE(child));
    } else {
      for (gsf_off_t left = gsf_input_size(child); left > 0;) {
        const auto part = static_cast<size_t>(std::min<gsf_off_t>(left, Piece));
        Expect(gsf_input_read(child, part, reinterpret_cast<guint8*>(bytes.data())) != nullptr,
               "libgsf reading");
        left -= static_cast<gsf_off_t>(part);
      }
    }
    g_object_unref(child);
  }
}

void ReadGsf(const Shape& shape) {
  GsfInput* file = gsf_input_stdio_new(Path(shape.name).c_str(), nullptr);
  GsfInfile* root = gsf_infile_msole_new(file, nullptr);
  Expect(root != nullptr, "libgsf opening");
  ReadGsf(root);
  g_object_unref(root);
  g_object_unref(file);
}

// --- Measures ---

struct Contestant {
  const char* name;
  std::function<void()> run;
  std::vector<double> times = {};
};

double Seconds(const std::function<void()>& run) {
  const auto begin = std::chrono::steady_clock::now();
  run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

/// The first contestant against each of the others.
void Compare(const char* what, std::vector<Contestant> contestants) {
  for (int round = 0; round < Rounds; ++round) {
    // Who goes first changes, so that nobody always finds what another left.
    for (std::size_t i = 0; i < contestants.size(); ++i) {
      Contestant& next = contestants[(i + static_cast<std::size_t>(round)) % contestants.size()];
      next.times.push_back(Seconds(next.run));
    }
  }
  const double first = Median(contestants[0].times);
  std::printf("%-34s %9.3f ms", what, first * 1e3);
  for (std::size_t i = 1; i < contestants.size(); ++i) {
    const double other = Median(contestants[i].times);
    std::printf("   %s %9.3f ms, ratio %.3f", contestants[i].name, other * 1e3, first / other);
  }
  std::printf("\n");
}

std::size_t MemoryInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

/// Bytes of memory that an open file takes, with every stream read once.
void PrintMemory(const Shape& shape) {
  const std::size_t before = MemoryInUse();
  IStorage* root = Open(shape);
  ReadStreams(root);
  const std::size_t open = MemoryInUse() - before;
  root->Release();
  const int elements = shape.storages * shape.streams + (shape.storages > 1 ? shape.storages : 0);
  std::printf("memory of %-8s %9zu bytes, %zu for each element\n", shape.name, open,
              open / static_cast<std::size_t>(elements));
}

}  // namespace

/// reading_bench [FOLDER]
int main(int argc, char** argv) {
  folder = argc > 1 ? argv[1] : ".";
  gsf_init();
  const Shape shapes[] = {Large4, Large3, Short4, Many};
  for (const Shape& shape : shapes) Write(shape);
  const auto compound = [](const Shape& shape) {
    return Contestant{"compound", [&shape] { ReadCompound(shape); }};
  };
  const auto gsf = [](const Shape& shape) {
    return Contestant{"libgsf", [&shape] { ReadGsf(shape); }};
  };
  const auto plain = [](const Shape& shape) {
    return Contestant{"read(2)", [&shape] { ReadPlain(shape); }};
  };
  Compare("1 GiB in reads of 64 KiB", {compound(Large4), plain(Large4), gsf(Large4)});
  Compare("the same, 512-byte sectors", {compound(Large3), plain(Large3), gsf(Large3)});
  Compare("100,000 streams of 32 bytes", {compound(Many), gsf(Many)});
  Compare("opening a file of 1 GiB",
          {{"", [] { Open(Large4)->Release(); }}, {"of 1 MiB", [] { Open(Short4)->Release(); }}});
  for (const Shape& shape : shapes) PrintMemory(shape);
  for (const Shape& shape : shapes) unlink(Path(shape.name).c_str());
  return 0;
}
