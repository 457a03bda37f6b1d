#include "tests/platform/read_storage.h"

#include <algorithm>
#include <utility>

namespace {

constexpr DWORD Mode = STGM_READ | STGM_SHARE_EXCLUSIVE;

void ReadStream(IStorage* storage, std::size_t most, ReadElement* element) {
  IStream* stream = nullptr;
  element->result = storage->OpenStream(element->name.c_str(), nullptr, Mode, 0, &stream);
  if (FAILED(element->result)) return;
  ULONG got = 1;
  std::string piece(65536, '\0');
  while (SUCCEEDED(element->result) && got > 0 && element->bytes.size() < most) {
    const std::size_t part = std::min(piece.size(), most - element->bytes.size());
    element->result = stream->Read(piece.data(), static_cast<ULONG>(part), &got);
    element->bytes.append(piece, 0, got);
  }
  stream->Release();
}

std::vector<ReadElement> List(IStorage* storage, std::size_t parent, HRESULT* result) {
  std::vector<ReadElement> elements;
  IEnumSTATSTG* list = nullptr;
  *result = storage->EnumElements(0, nullptr, 0, &list);
  if (FAILED(*result)) return elements;
  STATSTG stat;
  while (list->Next(1, &stat, nullptr) == S_OK) {
    elements.push_back({parent, stat.pwcsName, stat, {}, S_OK});
    CoTaskMemFree(std::exchange(elements.back().stat.pwcsName, nullptr));
  }
  list->Release();
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
  std::vector<std::pair<IStorage*, std::size_t>> waiting = {{root, 0}};
  while (!waiting.empty()) {
    const auto [storage, index] = waiting.back();
    waiting.pop_back();
    for (ReadElement& element : List(storage, index, &all[index].result)) {
      if (element.stat.type == STGTY_STREAM) {
        ReadStream(storage, most, &element);
      } else {
        IStorage* inner = nullptr;
        element.result =
            storage->OpenStorage(element.name.c_str(), nullptr, Mode, nullptr, 0, &inner);
        if (inner != nullptr) waiting.emplace_back(inner, all.size());
      }
      all.push_back(std::move(element));
    }
    storage->Release();
  }
  return all;
}

std::vector<ReadElement> ReadFile(const std::string& path) {
  HRESULT result = S_OK;
  IStorage* root = OpenForReading(path, &result);
  if (root == nullptr) return {{0, {}, {}, {}, result}};
  std::vector<ReadElement> all = ReadAll(root);
  root->Release();
  return all;
}
