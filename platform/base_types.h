#pragma once

/// The integer types, result codes and identifiers that the rest of this folder is written in.
/// Stands in for the corresponding part of <windows.h>; there it gives way to it.

#ifdef _WIN32

#include <windows.h>
#define KEL_PLATFORM_API

#else

#include <cstdint>
#include <cstring>

#define KEL_PLATFORM_API __attribute__((visibility("default")))

// Calling conventions mean nothing here; host code may name them all the same.
#define STDMETHODCALLTYPE
#define WINAPI

// Macros, as there: other headers may have them already.
#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using INT = int;
using UINT = unsigned int;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPVOID = void*;

/// Result of an operation: negative is failure.
using HRESULT = std::int32_t;

constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
constexpr bool FAILED(HRESULT result) { return result < 0; }

/// A 128-bit identifier of a class or an interface; 16 bytes, the first three fields in the
/// machine's byte order.
struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16);

inline bool operator==(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, 16) == 0; }
inline bool operator!=(const GUID& a, const GUID& b) { return !(a == b); }
inline BOOL IsEqualGUID(const GUID& a, const GUID& b) { return a == b ? TRUE : FALSE; }
inline BOOL IsEqualIID(const GUID& a, const GUID& b) { return IsEqualGUID(a, b); }
inline BOOL IsEqualCLSID(const GUID& a, const GUID& b) { return IsEqualGUID(a, b); }

constexpr GUID GUID_NULL = {};

using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

#endif
