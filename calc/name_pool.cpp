#include "calc/name_pool.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace {

/// Stands in storage directly before the characters of a name, the number last.
struct NameHead {
  std::uint32_t hash;
  std::uint32_t length;
  std::uint32_t number;
};
static_assert(offsetof(NameHead, number) + sizeof(std::uint32_t) == sizeof(NameHead));

NameHead HeadOf(const char* pooledName) {
  NameHead head;
  std::memcpy(&head, pooledName - sizeof(NameHead), sizeof(NameHead));
  return head;
}

/// FNV-1a, spread over the low bits that select a slot.
std::uint32_t HashOf(std::string_view name) {
  std::uint32_t hash = 2166136261U;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  return hash ^ (hash >> 15);
}

/// Open addressing with linear probing, at most half full; names are never taken out.
class NamePool {
 public:
  constexpr NamePool() = default;

  const char* Find(std::string_view name, std::uint32_t hash) const {
    return slots_.empty() ? nullptr : slots_[SlotFor(name, hash)];
  }

  const char* FindOrAdd(std::string_view name) {
    if (slots_.empty()) slots_.resize(FirstSize);
    const std::uint32_t hash = HashOf(name);
    const std::size_t slot = SlotFor(name, hash);
    if (slots_[slot] != nullptr) return slots_[slot];
    return Add(name, hash, slot);
  }

 private:
  static constexpr std::size_t FirstSize = 256;

  std::size_t SlotFor(std::string_view name, std::uint32_t hash) const {
    std::size_t slot = hash & (slots_.size() - 1);
    while (slots_[slot] != nullptr && !Equal(slots_[slot], name, hash)) {
      slot = (slot + 1) & (slots_.size() - 1);
    }
    return slot;
  }

  static bool Equal(const char* pooledName, std::string_view name, std::uint32_t hash) {
    const NameHead head = HeadOf(pooledName);
    return head.hash == hash && head.length == name.size() &&
           std::equal(name.begin(), name.end(), pooledName);
  }

  const char* Add(std::string_view name, std::uint32_t hash, std::size_t slot) {
    auto storage = std::make_unique<char[]>(sizeof(NameHead) + name.size() + 1);
    const NameHead head{hash, static_cast<std::uint32_t>(name.size()),
                        static_cast<std::uint32_t>(names_.size())};
    std::memcpy(storage.get(), &head, sizeof head);
    char* characters = storage.get() + sizeof head;
    std::memcpy(characters, name.data(), name.size());
    names_.push_back(std::move(storage));
    slots_[slot] = characters;
    if (names_.size() * 2 > slots_.size()) Grow();
    return characters;
  }

  void Grow() {
    std::vector<const char*> old(slots_.size() * 2);
    old.swap(slots_);
    for (const char* name : old) {
      if (name == nullptr) continue;
      std::size_t slot = HeadOf(name).hash & (slots_.size() - 1);
      while (slots_[slot] != nullptr) slot = (slot + 1) & (slots_.size() - 1);
      slots_[slot] = name;
    }
  }

  std::vector<std::unique_ptr<char[]>> names_;
  std::vector<const char*> slots_;
};

constinit NamePool Pool;

}  // namespace

constinit CaRecentNames RecentNames;

CaPooledName PoolName(std::string_view name) { return {Pool.FindOrAdd(name)}; }

CaPooledName FindPooledName(std::string_view name) { return {Pool.Find(name, HashOf(name))}; }
