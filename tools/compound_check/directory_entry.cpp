#include "tools/compound_check/directory_entry.h"

#include <algorithm>

#include "tools/compound_check/compound_bytes.h"
#include "tools/compound_check/compound_names.h"

namespace compound {

namespace {

// Where the fields stand.
constexpr std::size_t NameLength = 64, Type = 66, Color = 67, Left = 68, Right = 72, Child = 76,
                      ClassId = 80, StateBits = 96, Created = 100, Modified = 108, Start = 116,
                      Size = 120;
constexpr std::size_t NameUnits = 32;

/// Bytes of the name with its end.
std::size_t LengthOfName(std::string_view bytes) { return Word(bytes, NameLength) & 0xFFFF; }

bool IsNameLength(std::size_t length) { return length >= 4 && length <= 64 && length % 2 == 0; }

std::u16string ParseName(std::string_view bytes) {
  const std::size_t length = LengthOfName(bytes);
  const std::size_t units = IsNameLength(length) ? length / 2 - 1 : NameUnits - 1;
  std::u16string name;
  for (std::size_t i = 0; i < units; ++i) {
    name += static_cast<char16_t>(Number(bytes, 2 * i, 2));
  }
  return name;
}

void CheckUnused(const std::string& label, std::string_view bytes, Complaints& complaints) {
  std::string empty(EntrySize, '\0');
  std::fill_n(empty.begin() + Left, ClassId - Left, '\xFF');
  const auto [wanted, found] = std::mismatch(empty.begin(), empty.end(), bytes.begin());
  if (wanted == empty.end()) return;
  complaints.Add(label, "unused, byte at", found - bytes.begin(), "expected",
                 static_cast<std::uint8_t>(*wanted) + 0, "found",
                 static_cast<std::uint8_t>(*found) + 0);
}

void CheckName(const RawEntry& raw, const std::string& label, std::string_view bytes,
               Complaints& complaints) {
  for (std::size_t i = raw.name.size(); i < NameUnits; ++i) {
    complaints.Expect("name padding", label, 0, Number(bytes, 2 * i, 2));
  }
  const std::size_t length = LengthOfName(bytes);
  complaints.Require(IsNameLength(length), "name length", label, length);
  for (const char16_t unit : raw.name) {
    const bool forbidden = std::u16string_view(u"/\\:!").find(unit) != std::u16string_view::npos;
    complaints.Require(!forbidden && unit != 0, "character of the name", label, unit);
  }
}

void CheckStreamFields(const RawEntry& raw, const std::string& label, Complaints& complaints) {
  for (const std::uint8_t byte : raw.entry.classId) complaints.Expect("class id", label, 0, byte);
  complaints.Expect("child", label, NoEntry, raw.child);
  complaints.Expect("state bits", label, 0, raw.entry.stateBits);
  complaints.Expect("modified", label, 0, raw.entry.modified);
}

void CheckFields(std::size_t index, const RawEntry& raw, const std::string& label, bool isVersion3,
                 Complaints& complaints) {
  const bool known = raw.type == Storage || raw.type == Stream || raw.type == Root;
  complaints.Require(known && (raw.type == Root) == (index == 0), "type", label, raw.type);
  complaints.Require(raw.color <= Black, "color", label, raw.color);
  if (raw.type == Stream) CheckStreamFields(raw, label, complaints);
  if (raw.type != Storage) complaints.Expect("created", label, 0, raw.entry.created);
  if (raw.type == Storage) {
    complaints.Expect("start", label, 0, raw.start);
    complaints.Expect("size", label, 0, raw.entry.size);
  }
  if (isVersion3) complaints.Require(raw.entry.size <= 0x80000000U, "size", label, raw.entry.size);
}

}  // namespace

std::string EntryLabel(std::size_t index, const RawEntry& raw) {
  return "entry " + std::to_string(index) + " \"" + Utf8(raw.name) + "\":";
}

RawEntry ParseEntry(std::string_view bytes) {
  RawEntry raw;
  raw.type = static_cast<std::uint8_t>(bytes[Type]);
  raw.color = static_cast<std::uint8_t>(bytes[Color]);
  raw.left = Word(bytes, Left);
  raw.right = Word(bytes, Right);
  raw.child = Word(bytes, Child);
  raw.start = Word(bytes, Start);
  if (raw.type != Unused) raw.name = ParseName(bytes);
  raw.entry.type = static_cast<EntryType>(raw.type);
  std::copy_n(bytes.begin() + ClassId, raw.entry.classId.size(), raw.entry.classId.begin());
  raw.entry.stateBits = Word(bytes, StateBits);
  raw.entry.created = Number(bytes, Created, 8);
  raw.entry.modified = Number(bytes, Modified, 8);
  raw.entry.size = Number(bytes, Size, 8);
  return raw;
}

void CheckEntry(std::size_t index, const RawEntry& raw, std::string_view bytes, bool isVersion3,
                Complaints& complaints) {
  const std::string label = EntryLabel(index, raw);
  if (raw.type == Unused) return CheckUnused(label, bytes, complaints);
  CheckName(raw, label, bytes, complaints);
  CheckFields(index, raw, label, isVersion3, complaints);
}

}  // namespace compound
