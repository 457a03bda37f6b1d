#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

struct CaListNode;
struct CaOperatorEntry;
struct CaSpecifierEntry;

/// One name of the language and what it stands for. It never moves and lasts as long as its table.
struct CaName {
  CaListNode* variable = nullptr;          // where a variable of that name stands (variables.h)
  const CaOperatorEntry* entry = nullptr;  // the operator or the function
  const CaSpecifierEntry* specifier = nullptr;  // the compound constant
  std::uint64_t first = 0;                      // the name's first bytes, see NameWords
  std::uint32_t hash = 0;
  std::uint32_t length = 0;

  /// The characters, zero-terminated. They stand in storage directly behind this.
  const char* Text() const { return reinterpret_cast<const char*>(this + 1); }
};

/// What a name is looked for by: its first eight bytes as one number and a hash of all. A name of
/// up to eight bytes is told by number and length alone; of longer ones the other words of eight
/// bytes count, the last of which overlaps the one before, so that no name needs a loop over its
/// bytes.
class CaNameKey {
 public:
  [[gnu::always_inline]] explicit CaNameKey(std::string_view name)
      : name_(name), first_(FirstOf(name)) {
    std::uint64_t hash = (first_ ^ name.size()) * Spread;
    if (name.size() > 8) {
      AllWords(name.size(), [&](std::size_t at) {
        hash = Mixed(hash, WordAt(name, at));
        return true;
      });
    }
    hash_ = static_cast<std::uint32_t>(hash >> 32);
  }

  std::uint64_t First() const { return first_; }
  std::uint32_t Hash() const { return hash_; }

  bool IsOf(const CaName& known) const {
    if (known.first != first_ || known.length != name_.size()) return false;
    if (name_.size() <= 8) return true;
    const std::string_view text(known.Text(), name_.size());
    return AllWords(name_.size(),
                    [&](std::size_t at) { return WordAt(name_, at) == WordAt(text, at); });
  }

 private:
  // An odd number, near 2^64 over the golden ratio, that spreads each bit over all higher ones.
  static constexpr std::uint64_t Spread = 0x9E3779B97F4A7C15U;

  template <typename Word>
  static std::uint64_t Load(const char* from) {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
  }

  /// Whether `is` is true of the places of all words behind the first in a name of more than eight
  /// bytes. Up to 24 bytes it takes no loop.
  template <typename Is>
  static bool AllWords(std::size_t size, Is is) {
    if (size > 16) {
      if (!is(8)) return false;
      for (std::size_t at = 16; at + 8 < size; at += 8) {
        if (!is(at)) return false;
      }
    }
    return is(size - 8);
  }

  static std::uint64_t WordAt(std::string_view name, std::size_t at) {
    return Load<std::uint64_t>(name.data() + at);
  }

  static std::uint64_t Mixed(std::uint64_t hash, std::uint64_t word) {
    return (std::rotl(hash, 32) ^ word) * Spread;
  }

  /// Different for different names of one length up to eight.
  static std::uint64_t FirstOf(std::string_view name) {
    const char* text = name.data();
    const std::size_t length = name.size();
    if (length >= 8) return Load<std::uint64_t>(text);
    if (length >= 4) {
      return Load<std::uint32_t>(text + length - 4) << 32 | Load<std::uint32_t>(text);
    }
    if (length == 0) return 0;
    return Load<std::uint8_t>(text + length - 1) << 16 |
           Load<std::uint8_t>(text + length / 2) << 8 | Load<std::uint8_t>(text);
  }

  std::string_view name_;
  std::uint64_t first_;
  std::uint32_t hash_;
};

/// The table of all names that an interpreter knows: those of operators, functions and constants
/// from the start, those of variables as they are met. Names are never taken out.
class CaNames {
 public:
  CaNames();
  CaNames(const CaNames&) = delete;
  CaNames& operator=(const CaNames&) = delete;

  /// The entry of `name`, null when it was never met.
  CaName* Find(std::string_view name) const;

  /// The same; a name that was never met is added.
  [[gnu::always_inline]] CaName& Intern(std::string_view name) {
    const CaNameKey key(name);
    CaName* const* slot = SlotOf(key);
    return *slot != nullptr ? **slot : Add(name, key.First(), key.Hash());
  }

  /// Makes every name stand for no variable.
  void ForgetVariables();

 private:
  // Open addressing, at most half full. The upper bits of a hash depend on every byte.
  CaName* const* FirstSlot(std::uint32_t hash) const { return slots_.get() + (hash >> shift_); }
  CaName* const* Next(CaName* const* slot) const { return ++slot == end_ ? slots_.get() : slot; }

  /// Where the name stands, or the empty slot where it belongs.
  CaName* const* SlotOf(const CaNameKey& key) const {
    CaName* const* slot = FirstSlot(key.Hash());
    while (*slot != nullptr && !key.IsOf(**slot)) slot = Next(slot);
    return slot;
  }

  CaName& Add(std::string_view name, std::uint64_t first, std::uint32_t hash);
  void Place(CaName& name);
  void SetSize(unsigned bits);
  void* Room(std::size_t size);

  std::unique_ptr<CaName*[]> slots_;
  CaName* const* end_ = nullptr;
  unsigned shift_ = 32;  // what of a hash does not select the slot
  std::size_t count_ = 0;
  std::vector<std::unique_ptr<std::byte[]>> blocks_;  // hold the names, one behind the other
  std::byte* room_ = nullptr;                         // what is left of the last block
  std::size_t left_ = 0;
};
