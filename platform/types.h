// Base types of the platform: fixed-width integers, status codes, last error.
// Everything here has the size the platform publishes, whatever the compiler's own `long` is.
#pragma once

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using BOOL = std::int32_t;
using HRESULT = std::int32_t;
using LSTATUS = std::int32_t;
using FLONG = std::uint32_t;
using COLORREF = std::uint32_t;
using LONG_PTR = std::int64_t;
using ULONG_PTR = std::uint64_t;
using SIZE_T = std::size_t;
using WCHAR = char16_t;

using PVOID = void*;
using LPVOID = void*;
using PBYTE = BYTE*;
using LPBYTE = BYTE*;
using PDWORD = DWORD*;
using LPDWORD = DWORD*;
using PSTR = char*;
using LPSTR = char*;
using LPCSTR = const char*;
using PWSTR = WCHAR*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPBOOL = BOOL*;

using HANDLE = void*;
using HMODULE = void*;
using HINSTANCE = void*;
using HLOCAL = void*;
using HGLOBAL = void*;
using HPALETTE = void*;
using HSURF = void*;
using HDEV = void*;
using DHSURF = void*;
using DHPDEV = void*;

struct GUID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  BYTE Data4[8];

  bool operator==(const GUID&) const = default;
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
using REFGUID = const GUID&;
static_assert(sizeof(GUID) == 16);

// The two halves of a 64-bit number, or the whole of it.
union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  std::int64_t QuadPart;
};
union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  std::uint64_t QuadPart;
};

struct POINTL {
  LONG x;
  LONG y;
};
using POINT = POINTL;
struct SIZEL {
  LONG cx;
  LONG cy;
};
struct RECTL {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

// A wide (16-bit) literal.
#define WTEXT(literal) u##literal

// Calling conventions and export marks of the platform.
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define APIENTRY
#define WINAPI
#define PLATFORM_EXPORT __attribute__((visibility("default")))
#define PLATFORM_IMPORT PLATFORM_EXPORT
#define PLATFORM_API extern "C" PLATFORM_EXPORT
#define PLATFORM_CXX_API PLATFORM_EXPORT  // types of the C++ library in it
// A printf of ours, whose format and first argument stand at these places: calls are checked.
#define PLATFORM_PRINTF(format_place, argument_place) \
  __attribute__((format(printf, format_place, argument_place)))
#define MODULE_EXPORT extern "C" __attribute__((visibility("default")))

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110u);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111u);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3u);
inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001u);
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009u);
inline constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070u);

inline constexpr bool SUCCEEDED(HRESULT hr) { return hr >= 0; }
inline constexpr bool FAILED(HRESULT hr) { return hr < 0; }

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_LEVEL = 124;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_INVALID_PRINTER_NAME = 1801;

// The calling thread's last error code. A call that succeeds leaves it alone unless it says
// otherwise.
PLATFORM_API DWORD WINAPI GetLastError();
PLATFORM_API void WINAPI SetLastError(DWORD dwErrCode);
