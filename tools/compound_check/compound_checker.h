#pragma once

/// An independent reader and structural checker of compound files, versions 3 and 4, written from
/// the published format. It shares no code with the layer that writes the files.

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace compound {

enum EntryType : std::uint8_t { Unused = 0, Storage = 1, Stream = 2, Root = 5 };

/// A run of bytes of the file.
struct Extent {
  std::uint64_t offset;
  std::uint64_t length;
};

/// One used entry of the directory. A plain record.
struct Entry {
  std::u16string path;  // names from below the root, joined by '/'; empty for the root
  EntryType type = Unused;
  std::array<std::uint8_t, 16> classId{};
  std::uint32_t stateBits = 0;
  std::uint64_t created = 0;    // 100 ns since 1601
  std::uint64_t modified = 0;   // 100 ns since 1601
  std::uint64_t size = 0;       // bytes; the root's is that of the mini stream
  std::vector<Extent> extents;  // where the bytes of a stream lie, in order
};

/// What a file may have been written with; the defaults are the format's own values.
struct Parameters {
  std::uint32_t cutoff = 4096;             // smaller streams live in the mini stream
  std::uint64_t lockOffset = 0x7FFFFF00U;  // the sector that holds this byte stays without owner
};

/// What a check found: complaints, each with the expected and the found value, and the contents
/// as far as they could be read: the root first, each storage before what it holds.
struct Findings {
  std::vector<std::string> complaints;
  std::vector<Entry> entries;

  bool Valid() const { return complaints.empty(); }
  std::string Text() const;  // the complaints, a line each
  const Entry* Find(std::u16string_view path) const;
};

/// Checks a whole file. Never throws and always ends, whatever the bytes.
Findings Check(std::istream& file, const Parameters& parameters = {});
Findings CheckFile(const std::string& fileName, const Parameters& parameters = {});

/// The bytes of a stream; and a hash (FNV-1a, 64 bits) of them for streams too big to hold.
std::string Contents(std::istream& file, const Entry& entry);
std::uint64_t Hash(std::istream& file, const Entry& entry);

}  // namespace compound
