#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/storage.h"

/// An element of an open file. What could not be read has the reason in `result`.
struct ReadElement {
  std::size_t parent = 0;  // the index of its storage; the root, element 0, is its own
  std::wstring name;
  STATSTG stat = {};  // without its name
  std::string bytes;  // of a stream, as far as they could be read
  HRESULT result = S_OK;
};

/// Opens a file for reading; null with the reason in `*result`.
IStorage* OpenForReading(const std::string& path, HRESULT* result);

/// Reads all elements below a storage, and it itself, each as often as it is met; of a stream no
/// more than `most` bytes. Elements of one storage keep the order in which they are told.
std::vector<ReadElement> ReadAll(IStorage* root, std::size_t most = std::size_t{1} << 30);

/// A file's elements; one element with the reason when it cannot be opened.
std::vector<ReadElement> ReadFile(const std::string& path);
