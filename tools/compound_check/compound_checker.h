#pragma once

/// An independent reader and structural checker of compound files, versions 3 and 4, written from
/// the published format. It shares no code with the layer that writes the files.

#include <array>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "tools/compound_check/complaints.h"

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
  std::vector<Extent> extents;  // where the bytes of a stream lie, in order, as far as it is known
  bool damaged = false;         // the bytes of this stream cannot be trusted
};

/// What a file may have been written with; the defaults are the format's own values.
struct Parameters {
  std::uint32_t cutoff = 4096;             // smaller streams live in the mini stream
  std::uint64_t lockOffset = 0x7FFFFF00U;  // the sector that holds this byte stays without owner
};

/// What a check found: complaints, the damages first, and the contents as far as they could be
/// read: the root first, each storage before what it holds.
struct Findings {
  std::vector<Complaint> complaints;
  std::vector<Entry> entries;

  bool IsDamaged() const;    // else every stream can be trusted
  std::string Text() const;  // all complaints with their evidence, a line each
  const Entry* Find(std::u16string_view path) const;
};

/// Checks a whole file. Always ends, whatever the bytes; throws only when there is no memory for
/// the file's own tables.
Findings Check(std::istream& file, const Parameters& parameters = {});
Findings CheckFile(const std::string& fileName, const Parameters& parameters = {});

/// Hands the bytes of a stream to `take`, piece after piece, until it answers false. True when all
/// that is known of the stream was read and taken.
bool ReadStream(std::istream& file, const Entry& entry,
                const std::function<bool(std::string_view)>& take);

/// The bytes of a stream, as far as they can be read.
std::string Contents(std::istream& file, const Entry& entry);

}  // namespace compound
