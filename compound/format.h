#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The compound file format, versions 3 and 4, as publicly documented:
///
///   file      = header sector*
///   header    = 512 bytes, filled with zeros to one sector; sector n lies at (n + 1) * sectorSize
///   sector    = stream data | mini stream data | directory | mini FAT | FAT | DIFAT | free
///   FAT       = for each sector the next one of its chain, or one of the marks below
///   DIFAT     = the sectors of the FAT: 109 in the header, then chained sectors
///   directory = 128-byte entries; the children of a storage form a red-black tree
///   mini      = the root entry's stream, cut into 64-byte sectors with a FAT of their own;
///               holds the streams shorter than 4096 bytes

constexpr std::uint32_t MaxRegularSector = 0xFFFFFFFA;
constexpr std::uint32_t MarkDifat = 0xFFFFFFFC;
constexpr std::uint32_t MarkFat = 0xFFFFFFFD;
constexpr std::uint32_t MarkEndOfChain = 0xFFFFFFFE;
constexpr std::uint32_t MarkFree = 0xFFFFFFFF;
constexpr std::uint32_t NoStream = 0xFFFFFFFF;

constexpr unsigned MiniSectorShift = 6;
constexpr std::uint32_t MiniSectorSize = 1U << MiniSectorShift;
constexpr std::uint32_t HeaderDifatEntries = 109;
constexpr std::size_t MaxNameUnits = 31;

enum CompoundEntryType : std::uint8_t {
  EntryUnused = 0,
  EntryStorage = 1,
  EntryStream = 2,
  EntryRoot = 5
};
enum CompoundColor : std::uint8_t { ColorRed = 0, ColorBlack = 1 };

// The records are written as they lie in memory, so this is for little-endian machines.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

/// A class identifier as it lies in the file: three fields, little-endian, and eight bytes.
using ClassId = std::array<std::uint8_t, 16>;

#pragma pack(push, 1)
struct CompoundHeader {
  std::uint8_t signature[8];
  ClassId classId;  // zero
  std::uint16_t minorVersion;
  std::uint16_t majorVersion;
  std::uint16_t byteOrder;
  std::uint16_t sectorShift;
  std::uint16_t miniSectorShift;
  std::uint8_t reserved[6];
  std::uint32_t directorySectors;  // zero in version 3
  std::uint32_t fatSectors;
  std::uint32_t directoryStart;
  std::uint32_t transaction;  // zero
  std::uint32_t miniCutoff;
  std::uint32_t miniFatStart;
  std::uint32_t miniFatSectors;
  std::uint32_t difatStart;
  std::uint32_t difatSectors;
  std::uint32_t difat[HeaderDifatEntries];
};

struct CompoundEntryRecord {
  char16_t name[MaxNameUnits + 1];
  std::uint16_t nameBytes;  // with the closing zero
  std::uint8_t type;
  std::uint8_t color;
  std::uint32_t left;
  std::uint32_t right;
  std::uint32_t child;
  ClassId classId;
  std::uint32_t stateBits;
  std::uint64_t created;
  std::uint64_t modified;
  std::uint32_t start;
  std::uint64_t size;
};
#pragma pack(pop)
static_assert(sizeof(CompoundHeader) == 512);
static_assert(sizeof(CompoundEntryRecord) == 128);

/// What shapes a file. Tests choose small values to reach the paths of large files.
struct CompoundParameters {
  std::uint32_t sectorSize = 512;          // bytes; 512 makes version 3, 4096 version 4
  std::uint32_t miniCutoff = 4096;         // bytes; shorter streams live in the mini stream
  std::uint64_t lockOffset = 0x7FFFFF00;   // of the byte whose sector is never used for data
  std::uint64_t largeInMemory = 32 << 20;  // bytes; from there on see TableSpace

  bool IsMini(std::uint64_t bytes) const { return bytes < miniCutoff; }
  std::uint32_t MarksPerSector() const { return sectorSize / 4; }
  std::uint32_t EntriesPerSector() const { return sectorSize / 128; }
};
