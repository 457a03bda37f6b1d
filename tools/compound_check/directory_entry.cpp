#include "tools/compound_check/directory_entry.h"

#include <algorithm>

#include "tools/compound_check/compound_bytes.h"

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

void CheckName(const RawEntry& raw, const std::string& label, std::string_view bytes,
               Complaints& complaints) {
  const std::size_t length = LengthOfName(bytes);
  if (!IsNameLength(length)) {
    // Nobody asks for the root by its name.
    complaints.Add(raw.type == Root ? Grade::Unusual : Grade::Damaged, label,
                   "the length of its name is none", {raw.place + NameLength, {}, length});
  }
  const std::string_view padding =
      bytes.substr(2 * raw.name.size(), NameLength - 2 * raw.name.size());
  if (padding.find_first_not_of('\0') != padding.npos) {
    complaints.Unusual(label, "its name is not followed by zeros",
                       {raw.place + 2 * raw.name.size()});
  }
  if (raw.name.find_first_of(std::u16string_view(u"/\\:!\0", 5)) != raw.name.npos) {
    complaints.Unusual(label, "its name holds a character that is not allowed", {raw.place});
  }
  if (raw.type == Root && raw.name != u"Root Entry") {
    complaints.Unusual(label, "is not called \"Root Entry\"", {raw.place});
  }
}

/// Fields that mean nothing for this type of entry and should hold nothing.
void CheckMeaninglessFields(const RawEntry& raw, const std::string& label, std::string_view bytes,
                            Complaints& complaints) {
  const bool stream = raw.type == Stream;
  const bool root = raw.type == Root;
  const struct {
    bool applies;
    std::size_t offset;
    int width;
    std::uint64_t expected;
    const char* what;
  } fields[] = {
      {root, Left, 4, NoEntry, "has a neighbour to the left"},
      {root, Right, 4, NoEntry, "has a neighbour to the right"},
      {stream, Child, 4, NoEntry, "holds other entries"},
      {stream, ClassId, 8, 0, "has a class"},
      {stream, ClassId + 8, 8, 0, "has a class"},
      {stream, StateBits, 4, 0, "has state bits"},
      {stream || root, Created, 8, 0, "has a time of creation"},
      {stream, Modified, 8, 0, "has a time of modification"},
      {raw.type == Storage, Start, 4, 0, "has a first sector"},
      {raw.type == Storage, Size, 8, 0, "has a size"},
  };
  for (const auto& field : fields) {
    const std::uint64_t found = Number(bytes, field.offset, field.width);
    if (!field.applies || found == field.expected) continue;
    complaints.Unusual(label,
                       std::string(field.what) + (stream ? " although it is a stream"
                                                  : root ? " although it is the root"
                                                         : " although it is a storage"),
                       {raw.place + field.offset, field.expected, found});
  }
}

}  // namespace

RawEntry ParseEntry(std::string_view bytes, bool isVersion3) {
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
  raw.entry.size = Number(bytes, Size, isVersion3 ? 4 : 8);
  return raw;
}

void CheckEntry(const RawEntry& raw, const std::string& label, std::string_view bytes,
                Complaints& complaints) {
  CheckName(raw, label, bytes, complaints);
  CheckMeaninglessFields(raw, label, bytes, complaints);
  if (raw.color > Black) {
    complaints.Unusual(label, "is neither red nor black", {raw.place + Color, {}, raw.color});
  }
  if (raw.type != Storage && raw.entry.size != Number(bytes, Size, 8)) {
    complaints.Unusual(label,
                       "its size has more than 32 bits, of which version 3 reads the low ones",
                       {raw.place + Size, raw.entry.size, Number(bytes, Size, 8)});
  }
}

bool IsEmptyEntry(std::string_view bytes) {
  std::string empty(EntrySize, '\0');
  std::fill_n(empty.begin() + Left, ClassId - Left, '\xFF');
  return bytes == empty;
}

}  // namespace compound
