#pragma once

/// What is in a scene file: owners for storages and streams, writing and reading all of something,
/// telling whether a file is whole, and what the result codes mean in words. A part of the kit for
/// hosts; `kelsave_kit.h` includes it.
///
/// Paths and texts are in the host's character set, names of streams and storages are wide. What is
/// said to throw throws `kel::Error`, or std::bad_alloc.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

#include "kelsave.h"

#ifndef _WIN32
#include "platform/host_strings.h"
#endif

namespace kel {

// ---- Why something failed ---------------------------------------------------------------------

/// What a result code of structured storage means, for people: "the disk is full".
inline std::string TextOf(HRESULT code) {
  static const struct {
    HRESULT code;
    const char* text;
  } texts[] = {
      {STG_E_FILENOTFOUND, "there is no such file"},
      {STG_E_PATHNOTFOUND, "there is no such folder"},
      {STG_E_ACCESSDENIED, "there is no permission"},
      {E_ACCESSDENIED, "there is no permission"},
      {STG_E_SHAREVIOLATION, "it is in use"},
      {STG_E_LOCKVIOLATION, "it is in use"},
      {STG_E_INUSE, "it is in use"},
      {STG_E_MEDIUMFULL, "the disk is full"},
      {STG_E_DISKISWRITEPROTECTED, "the disk is read-only"},
      {STG_E_WRITEFAULT, "the disk cannot be written"},
      {STG_E_READFAULT, "it cannot be read to its end"},
      {STG_E_SEEKERROR, "it cannot be read to its end"},
      {STG_E_FILEALREADYEXISTS, "it is no compound file"},
      {STG_E_INVALIDHEADER, "it is no compound file that can be read"},
      {STG_E_OLDFORMAT, "it is of a format that is too old"},
      {STG_E_OLDDLL, "it is of a format that is too new"},
      {STG_E_DOCFILECORRUPT, "it is damaged"},
      {STG_E_INVALIDNAME, "the name is not allowed"},
      {STG_E_TOOMANYOPENFILES, "too many files are open"},
      {STG_E_INSUFFICIENTMEMORY, "there is not enough memory"},
      {E_OUTOFMEMORY, "there is not enough memory"},
      {STG_E_REVERTED, "it is closed already"},
  };
  for (const auto& row : texts) {
    if (row.code == code) return row.text;
  }
  char text[32];
  std::snprintf(text, sizeof text, "error 0x%08lX",
                static_cast<unsigned long>(code) & 0xFFFFFFFFUL);
  return text;
}

/// What the functions of the kit throw; `what()` is a text for people.
class Error : public std::runtime_error {
 public:
  Error(HRESULT code, const std::string& text) : runtime_error(text), code_(code) {}

  HRESULT Code() const { return code_; }  // of structured storage

 private:
  HRESULT code_;
};

// ---- Names and paths --------------------------------------------------------------------------

/// A path or name in the host's character set, as structured storage wants it.
inline std::wstring Wide(const std::string& text) {
#ifdef _WIN32
  const int size = static_cast<int>(text.size());
  std::wstring wide(
      static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0)),
      L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), size, &wide[0], static_cast<int>(wide.size()));
  return wide;
#else
  WStr wide(text.c_str());
  if (wide == nullptr) throw std::bad_alloc();
  return static_cast<wchar_t*>(wide);
#endif
}

/// The way back, for messages; what the character set does not have becomes a question mark.
inline std::string Narrow(const std::wstring& text) {
#ifdef _WIN32
  const int size = static_cast<int>(text.size());
  const auto convert = [&](char* to, int room) {
    return WideCharToMultiByte(CP_ACP, 0, text.data(), size, to, room, nullptr, nullptr);
  };
  std::string narrow(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  convert(&narrow[0], static_cast<int>(narrow.size()));
  return narrow;
#else
  std::string narrow;
  for (const wchar_t letter : text) {
    try {
      narrow += std::filesystem::path(std::wstring(1, letter)).string();
    } catch (const std::exception&) {
      narrow += '?';
    }
  }
  return narrow;
#endif
}

namespace detail {

/// For the standard library, which elsewhere than on Windows takes only '/' for a separator.
inline std::filesystem::path Native(std::string path) {
#ifndef _WIN32
  for (char& c : path) c = c == '\\' ? '/' : c;
#endif
  return path;
}

/// The file that a path means: where it leads, if it is a symbolic link.
inline std::string Resolved(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path file = Native(path);
  for (int links = 0; links < 40 && fs::is_symlink(file, error); ++links) {
    file = file.parent_path() / fs::read_symlink(file, error);
  }
  return file == Native(path) ? path : file.string();
}

/// The reason in words; `path` is looked at for what the code leaves open.
inline std::string ReasonOf(const std::string& path, HRESULT code) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const fs::file_status status = fs::status(Native(path), ignored);
  if (fs::is_directory(status)) return "it is a folder";
  if (fs::exists(status) && !fs::is_regular_file(status)) return "it is no plain file";
  const bool empty = fs::is_regular_file(status) && fs::file_size(Native(path), ignored) == 0;
  if (code == STG_E_FILEALREADYEXISTS && empty) return "it is empty";
  const bool readOnly = fs::is_regular_file(status) &&
                        (status.permissions() & fs::perms::owner_write) == fs::perms::none;
  const bool readable = (status.permissions() & fs::perms::owner_read) != fs::perms::none;
  if (code == STG_E_ACCESSDENIED && readOnly && readable) return "it is read-only";
  return TextOf(code);
}

}  // namespace detail

// ---- Storages and streams ---------------------------------------------------------------------

namespace detail {
struct Release {
  void operator()(IUnknown* object) const { object->Release(); }
};
}  // namespace detail

/// Owners of one reference each. Elements are closed before what holds them: declare them after it.
using Storage = std::unique_ptr<IStorage, detail::Release>;
using Stream = std::unique_ptr<IStream, detail::Release>;

/// A storage or a stream in a storage.
struct Element {
  std::wstring name;
  bool isStorage;
  std::uint64_t size;  // bytes of a stream
};

namespace detail {

/// The name in `status`, whose memory is given back.
inline std::wstring TakeName(STATSTG& status) {
  const std::unique_ptr<OLECHAR, void(WINAPI*)(LPVOID)> name(status.pwcsName, CoTaskMemFree);
  return name == nullptr ? L"" : name.get();
}

/// Throws unless the call succeeded; only then is the name looked up.
inline void Check(HRESULT result, IStream& stream) {
  if (SUCCEEDED(result)) return;
  STATSTG status = {};
  stream.Stat(&status, STATFLAG_DEFAULT);
  const std::string name = Narrow(TakeName(status));
  throw Error(result, name.empty() ? TextOf(result) : name + ": " + TextOf(result));
}

template <typename Owner, typename Call>
Owner Take(const std::wstring& name, Call call) {
  typename Owner::pointer opened = nullptr;
  const HRESULT result = call(&opened);
  if (FAILED(result)) throw Error(result, Narrow(name) + ": " + TextOf(result));
  return Owner(opened);
}

constexpr DWORD Creating = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD Reading = STGM_READ | STGM_SHARE_EXCLUSIVE;

}  // namespace detail

/// Makes a new, empty stream or storage in `parent`, in place of one that has the name. Throws.
inline Stream CreateStream(IStorage& parent, const std::wstring& name) {
  return detail::Take<Stream>(name, [&](IStream** stream) {
    return parent.CreateStream(name.c_str(), detail::Creating, 0, 0, stream);
  });
}
inline Storage CreateStorage(IStorage& parent, const std::wstring& name) {
  return detail::Take<Storage>(name, [&](IStorage** storage) {
    return parent.CreateStorage(name.c_str(), detail::Creating, 0, 0, storage);
  });
}

/// Opens a stream or a storage of `parent` for reading. Throws.
inline Stream OpenStream(IStorage& parent, const std::wstring& name) {
  return detail::Take<Stream>(name, [&](IStream** stream) {
    return parent.OpenStream(name.c_str(), nullptr, detail::Reading, 0, stream);
  });
}
inline Storage OpenStorage(IStorage& parent, const std::wstring& name) {
  return detail::Take<Storage>(name, [&](IStorage** storage) {
    return parent.OpenStorage(name.c_str(), nullptr, detail::Reading, nullptr, 0, storage);
  });
}

/// What `storage` holds, in the order of the format: by length, then without regard to case.
/// Throws.
inline std::vector<Element> List(IStorage& storage) {
  const auto items = detail::Take<std::unique_ptr<IEnumSTATSTG, detail::Release>>(
      L"list", [&](IEnumSTATSTG** list) { return storage.EnumElements(0, nullptr, 0, list); });
  std::vector<Element> elements;
  STATSTG status = {};
  HRESULT result = S_OK;
  while ((result = items->Next(1, &status, nullptr)) == S_OK) {
    elements.push_back(
        {detail::TakeName(status), status.type == STGTY_STORAGE, status.cbSize.QuadPart});
  }
  if (FAILED(result)) throw Error(result, "list: " + TextOf(result));
  return elements;
}

/// Writes all `size` bytes at the seek pointer. Throws when not all of them were taken.
inline void WriteAll(IStream& stream, const void* bytes, std::size_t size) {
  constexpr std::size_t Most = 1U << 30;  // the count of a call has 32 bits
  for (const char* from = static_cast<const char*>(bytes); size > 0;) {
    const auto part = static_cast<ULONG>(size < Most ? size : Most);
    ULONG written = 0;
    detail::Check(stream.Write(from, part, &written), stream);
    detail::Check(written == part ? S_OK : STG_E_MEDIUMFULL, stream);
    from += part;
    size -= part;
  }
}

/// The same for a text, a vector or an array of plain values, without its length.
template <typename Values>
void WriteAll(IStream& stream, const Values& values) {
  static_assert(std::is_trivially_copyable<typename Values::value_type>::value, "plain values");
  WriteAll(stream, values.data(), values.size() * sizeof(typename Values::value_type));
}

/// All that is left of the stream, from the seek pointer on, in values of type `T`. Throws, also
/// when the bytes are no whole number of values.
template <typename T = char>
std::vector<T> ReadAll(IStream& stream) {
  static_assert(std::is_trivially_copyable<T>::value, "plain values");
  constexpr std::size_t Piece = 1U << 20;  // what a stream says of its size is not believed
  std::vector<T> values;
  std::size_t filled = 0;  // bytes
  ULONG read = 0;
  do {
    values.resize((filled + Piece) / sizeof(T) + 1);
    char* const end = reinterpret_cast<char*>(values.data()) + filled;
    detail::Check(stream.Read(end, static_cast<ULONG>(Piece), &read), stream);
    filled += read;
  } while (read > 0);
  detail::Check(filled % sizeof(T) == 0 ? S_OK : STG_E_DOCFILECORRUPT, stream);
  values.resize(filled / sizeof(T));
  return values;
}

/// The same as a text.
inline std::string ReadText(IStream& stream) {
  const std::vector<char> bytes = ReadAll(stream);
  return {bytes.begin(), bytes.end()};
}

// ---- Saved files ------------------------------------------------------------------------------

namespace detail {

/// The class of a file whose writers have not all returned.
constexpr CLSID Unfinished = {
    0xC2D4A1F6, 0x7B0E, 0x4E53, {0x9A, 0x61, 0x1F, 0x38, 0xE5, 0x0B, 0x94, 0x2C}};
/// The one that the library gives to a new file.
constexpr CLSID SceneFile = {
    0x5A3E0C91, 0x2B7D, 0x4F16, {0x8C, 0x4A, 0xD0, 0x7E, 0x93, 0xB1, 0xF2, 0x58}};

inline Storage OpenFile(const std::string& path, DWORD sharing) {
  namespace fs = std::filesystem;
  void* opened = nullptr;
  HRESULT result = STG_E_ACCESSDENIED;
  std::error_code ignored;
  const fs::file_status status = fs::status(Native(path), ignored);
  // Whatever else there is, a pipe or a device, might be waited for.
  if (!fs::exists(status) || fs::is_regular_file(status)) {
    result = StgOpenStorageEx(Wide(path).c_str(), STGM_READ | sharing, STGFMT_DOCFILE, 0, nullptr,
                              nullptr, IID_IStorage, &opened);
  }
  if (FAILED(result)) throw Error(result, ReasonOf(path, result));
  return Storage(static_cast<IStorage*>(opened));
}

/// Reads the last byte of the stream, to which all that comes before it leads.
inline void CheckEnd(IStorage& parent, const Element& element) {
  const Stream stream = OpenStream(parent, element.name);
  if (element.size == 0) return;
  LARGE_INTEGER last;
  last.QuadPart = static_cast<decltype(last.QuadPart)>(element.size - 1);
  char byte = 0;
  ULONG read = 0;
  Check(stream->Seek(last, STREAM_SEEK_SET, nullptr), *stream);
  Check(stream->Read(&byte, 1, &read), *stream);
  Check(read == 1 ? S_OK : STG_E_DOCFILECORRUPT, *stream);
}

/// `bytes` is the size of the file.
inline void CheckFile(IStorage& root, std::uintmax_t bytes) {
  STATSTG status = {};
  if (SUCCEEDED(root.Stat(&status, STATFLAG_NONAME)) && status.clsid == Unfinished) {
    throw Error(STG_E_DOCFILECORRUPT, "a save of it was not finished");
  }
  std::vector<Storage> open;  // from below the root to where the walk is
  std::vector<std::vector<Element>> left{List(root)};
  while (!left.empty()) {
    if (left.back().empty()) {
      left.pop_back();
      if (!open.empty()) open.pop_back();
      continue;
    }
    const Element element = left.back().back();
    left.back().pop_back();
    IStorage& storage = open.empty() ? root : *open.back();
    if (element.isStorage) {
      open.push_back(OpenStorage(storage, element.name));
      left.push_back(List(*open.back()));
    } else {
      // Streams that share their bytes would also cost as much as all of them apart.
      if (element.size > bytes) throw Error(STG_E_DOCFILECORRUPT, TextOf(STG_E_DOCFILECORRUPT));
      bytes -= element.size;
      CheckEnd(storage, element);
    }
  }
}

/// S_OK when the file is whole, else why it is not, and in words.
inline HRESULT Examine(const std::string& path, DWORD sharing, std::string& reason) {
  try {
    const Storage root = OpenFile(path, sharing);
    std::error_code ignored;  // then the size is the largest there is
    CheckFile(*root, std::filesystem::file_size(Native(path), ignored));
    return S_OK;
  } catch (const Error& error) {
    reason = error.what();
    return error.Code();
  }
}

}  // namespace detail

/// Opens a saved file for reading; while it is open nobody can save over it. Throws, with a text
/// for each thing that a path can name instead: no file, a folder, an empty file, a text...
inline Storage OpenScene(const std::string& path) {
  return detail::OpenFile(path, STGM_SHARE_DENY_WRITE);
}

/// Whether the file is one that a save has finished: it can be opened, and everything in it down to
/// the last byte of each stream can be found. The other bytes are not read. `reason`, if it is not
/// null, receives why not.
inline bool IsWhole(const std::string& path, std::string* reason = nullptr) {
  std::string text;
  const HRESULT result = detail::Examine(path, STGM_SHARE_DENY_WRITE, text);
  if (reason != nullptr) *reason = text;
  return SUCCEEDED(result);
}

}  // namespace kel
