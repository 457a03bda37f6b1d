#pragma once

/// A simple in-memory model of a structured storage, and random runs of operations on a real
/// storage and the model side by side.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "compound/gathering_file.h"
#include "platform/storage.h"
#include "tools/compound_check/compound_checker.h"
#include "tools/compound_check/compound_names.h"

namespace model {

struct NameOrder {
  bool operator()(std::u16string_view a, std::u16string_view b) const {
    return compound::CompareNames(a, b) < 0;
  }
};

/// A stream or a storage of the model.
struct Node {
  bool isStorage = false;
  std::string bytes = {};
  std::map<std::u16string, std::shared_ptr<Node>, NameOrder> children = {};
  CLSID classId{};
  DWORD stateBits = 0;
  std::uint64_t created = 0, modified = 0;  // FILETIME; 0: not set by the run, not compared
  int opened = 0;                           // interface pointers that a run holds

  bool operator==(const Node& other) const = default;
};

/// Sizes around every boundary of the format and of the writer's pieces.
constexpr std::uint32_t Piece = GatheringFile::PieceSize;
constexpr std::uint32_t Sizes[] = {0,         1,     63,        64,        65,       511,
                                   512,       513,   4095,      4096,      4097,     65536,
                                   Piece - 1, Piece, Piece + 1, 2 * Piece, 3 * Piece};

/// The UTF-16 of a wide text.
std::u16string Utf16(std::wstring_view text);

/// Creates an empty docfile for reading and writing; null when that fails.
IStorage* CreateFile(const std::string& fileName, ULONG sectorSize);

/// Makes a stream of these bytes, and the same in the model as far as they were written.
HRESULT Put(IStorage& parent, Node& node, const std::wstring& name, const std::string& bytes);

struct Faults {
  bool goesOn;                           // whether the run does after one
  compound::Parameters parameters = {};  // of the file
  std::vector<HRESULT> results = {};     // of the calls that failed
};

using Ending = std::function<void(IStorage& root, Node& model)>;

/// Applies `steps` random operations, comparing each result with the model's, calls `atEnd`, and
/// releases everything. Failures are reported to GoogleTest. Returns the model of what the file
/// now holds. With `faults` the disk may fail: a call that fails must have changed nothing but the
/// bytes that it was to write over.
std::shared_ptr<Node> RandomRun(
    IStorage* root, const std::string& fileName, unsigned seed, int steps, Faults* faults = nullptr,
    const Ending& atEnd = [](IStorage&, Node&) {});

/// The same in a new file, on a disk that does not fail.
std::shared_ptr<Node> RandomRun(const std::string& fileName, unsigned seed, ULONG sectorSize,
                                int steps);

/// Checks the file's structure and compares its contents with the model.
void ExpectFileHolds(const std::string& fileName, const Node& root,
                     const compound::Parameters& parameters = {});

/// Opens the file for reading and compares what it tells with the model.
void ExpectReads(const std::string& fileName, const Node& root);

/// Writes the model's streams as plain files and its storages as folders.
void Unpack(const Node& root, const std::string& folder);

}  // namespace model
