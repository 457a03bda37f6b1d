#include "calc/names.h"

#include <algorithm>
#include <new>
#include <utility>

#include "calc/dispatch.h"

namespace {

constexpr unsigned FirstBits = 8;             // of the number of slots
constexpr std::size_t BlockSize = 16 * 1024;  // many times the longest name

}  // namespace

CaNames::CaNames() {
  SetSize(FirstBits);
  for (const CaOperatorEntry* table : {CaOperatorTable, CaFunctionTable}) {
    for (; *table->name != '\0'; ++table) Intern(table->name).entry = table;
  }
  for (const CaSpecifierEntry* entry = CaSpecifierTable; *entry->name != '\0'; ++entry) {
    Intern(entry->name).specifier = entry;
  }
}

CaName* CaNames::Find(std::string_view name) const { return *SlotOf(CaNameKey(name)); }

void CaNames::ForgetVariables() {
  for (CaName* const* slot = slots_.get(); slot != end_; ++slot) {
    if (*slot != nullptr) (*slot)->variable = nullptr;
  }
}

CaName& CaNames::Add(std::string_view name, std::uint64_t first, std::uint32_t hash) {
  auto* added = ::new (Room(sizeof(CaName) + name.size() + 1)) CaName;
  added->first = first;
  added->hash = hash;
  added->length = static_cast<std::uint32_t>(name.size());
  char* text = reinterpret_cast<char*>(added + 1);
  *std::copy(name.begin(), name.end(), text) = '\0';
  if (2 * ++count_ > static_cast<std::size_t>(end_ - slots_.get())) SetSize(33 - shift_);
  Place(*added);
  return *added;
}

void CaNames::Place(CaName& name) {
  auto slot = static_cast<std::size_t>(FirstSlot(name.hash) - slots_.get());
  while (slots_[slot] != nullptr)
    slot = static_cast<std::size_t>(Next(&slots_[slot]) - slots_.get());
  slots_[slot] = &name;
}

/// Makes 2^bits slots and moves all names into them.
void CaNames::SetSize(unsigned bits) {
  const std::size_t size = std::size_t{1} << bits;
  CaName* const* oldEnd = end_;
  const std::unique_ptr<CaName*[]> old = std::exchange(slots_, std::make_unique<CaName*[]>(size));
  end_ = slots_.get() + size;
  shift_ = 32 - bits;
  for (CaName* const* slot = old.get(); slot != oldEnd; ++slot) {
    if (*slot != nullptr) Place(**slot);
  }
}

/// `size` bytes for a name, aligned for one.
void* CaNames::Room(std::size_t size) {
  size = (size + alignof(CaName) - 1) / alignof(CaName) * alignof(CaName);
  if (size > left_) {
    left_ = std::max(BlockSize, size);
    blocks_.emplace_back(new std::byte[left_]);
    room_ = blocks_.back().get();
  }
  left_ -= size;
  return std::exchange(room_, room_ + size);
}
