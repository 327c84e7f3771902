// The current user's registry, read-only, over $VLX_HOME/registry.reg in the platform's text export
// format (version 5.00, UTF-16 with BOM or UTF-8). Key and value names compare without case. A
// missing file is an empty registry, a malformed one is one log line and counts as empty, a changed
// one is read again. Keys that are open keep the content they were opened with.
#pragma once

#include "platform/types.h"

using HKEY = void*;
using REGSAM = ULONG;

inline const HKEY HKEY_CURRENT_USER =
    reinterpret_cast<HKEY>(static_cast<LONG_PTR>(LONG(0x80000001)));
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;

// All return ERROR_SUCCESS or an error code; the thread's last error is not touched.

// ERROR_FILE_NOT_FOUND when the key is not there; *phkResult is then null. Empty components of the
// path count as they stand (a key of that name has to exist).
PLATFORM_API LSTATUS WINAPI RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions,
                                          REGSAM samDesired, HKEY* phkResult);
// Subkeys in the order of their names without case. *lpcchName: room in units with the terminator
// in, length without it out; ERROR_MORE_DATA when the name does not fit, ERROR_NO_MORE_ITEMS at the
// end.
PLATFORM_API LSTATUS WINAPI RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR lpName,
                                          LPDWORD lpcchName, LPDWORD lpReserved, LPWSTR lpClass,
                                          LPDWORD lpcchClass, void* lpftLastWriteTime);
// *lpcbData: room in bytes in, size of the value out; ERROR_MORE_DATA when it does not fit,
// ERROR_FILE_NOT_FOUND when there is no such value. A REG_SZ value has its terminator counted.
PLATFORM_API LSTATUS WINAPI RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved,
                                             LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData);
PLATFORM_API LSTATUS WINAPI RegCloseKey(HKEY hKey);
