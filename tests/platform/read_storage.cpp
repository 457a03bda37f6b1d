#include "tests/platform/read_storage.h"

#include <algorithm>
#include <utility>

#include "save/kelsave_files.h"

namespace {

constexpr DWORD Mode = STGM_READ | STGM_SHARE_EXCLUSIVE;

void ReadStream(IStream& stream, std::size_t most, ReadElement* element) {
  ULONG got = 1;
  std::string piece(65536, '\0');
  while (SUCCEEDED(element->result) && got > 0 && element->bytes.size() < most) {
    const std::size_t part = std::min(piece.size(), most - element->bytes.size());
    element->result = stream.Read(piece.data(), static_cast<ULONG>(part), &got);
    element->bytes.append(piece, 0, got);
  }
}

std::vector<ReadElement> List(IStorage* storage, std::size_t parent, HRESULT* result) {
  std::vector<ReadElement> elements;
  IEnumSTATSTG* list = nullptr;
  *result = storage->EnumElements(0, nullptr, 0, &list);
  STATSTG stat;
  while (SUCCEEDED(*result) && (*result = list->Next(1, &stat, nullptr)) == S_OK) {
    elements.push_back({parent, kel::detail::TakeName(stat), stat, {}, S_OK});
  }
  if (list != nullptr) list->Release();
  if (*result == S_FALSE) *result = S_OK;
  return elements;
}

}  // namespace

IStorage* OpenForReading(const std::string& path, HRESULT* result) {
  IStorage* root = nullptr;
  *result = StgOpenStorage(std::wstring(path.begin(), path.end()).c_str(), nullptr,
                           STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &root);
  return root;
}

std::vector<ReadElement> ReadAll(IStorage* root, std::size_t most) {
  std::vector<ReadElement> all(1);
  all[0].result = root->Stat(&all[0].stat, STATFLAG_NONAME);
  root->AddRef();
  std::vector<std::pair<kel::Storage, std::size_t>> waiting;
  waiting.emplace_back(root, 0);
  while (!waiting.empty()) {
    const auto [storage, index] = std::move(waiting.back());
    waiting.pop_back();
    for (ReadElement& element : List(storage.get(), index, &all[index].result)) {
      IStorage* inner = nullptr;
      IStream* stream = nullptr;
      const wchar_t* name = element.name.c_str();
      element.result = element.stat.type == STGTY_STREAM
                           ? storage->OpenStream(name, nullptr, Mode, 0, &stream)
                           : storage->OpenStorage(name, nullptr, Mode, nullptr, 0, &inner);
      if (stream != nullptr) ReadStream(*kel::Stream(stream), most, &element);
      if (inner != nullptr) waiting.emplace_back(inner, all.size());
      all.push_back(std::move(element));
    }
  }
  return all;
}

std::vector<ReadElement> ReadFile(const std::string& path) {
  HRESULT result = S_OK;
  const kel::Storage root(OpenForReading(path, &result));
  return root == nullptr ? std::vector<ReadElement>{{0, {}, {}, {}, result}} : ReadAll(root.get());
}
