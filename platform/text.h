// Text between 16-bit units and code pages, and local time.
#pragma once

#include "platform/types.h"

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr UINT CP_UTF8 = 65001;

// Converts cchWideChar units (-1: up to and including the terminator) to the code page. Returns the
// number of bytes written, or needed when cbMultiByte is 0. A character that the code page cannot
// hold becomes '?' (or *lpDefaultChar) and sets *lpUsedDefaultChar when given.
// Returns 0 on failure: last error ERROR_INSUFFICIENT_BUFFER when the bytes do not fit,
// ERROR_INVALID_PARAMETER for a bad argument or an unknown code page, ERROR_INVALID_FLAGS for flags
// that do not exist. Those that do change nothing here.
// CP_ACP and CP_THREAD_ACP mean the code page named in the system file (1252 by default).
PLATFORM_API INT WINAPI WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr,
                                            INT cchWideChar, LPSTR lpMultiByteStr, INT cbMultiByte,
                                            LPCSTR lpDefaultChar, LPBOOL lpUsedDefaultChar);

// The other way; the same rules. Bytes that mean nothing in the code page become U+FFFD.
PLATFORM_API INT WINAPI MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr,
                                            INT cbMultiByte, LPWSTR lpWideCharStr, INT cchWideChar);

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;  // 1 to 12
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};
static_assert(sizeof(SYSTEMTIME) == 16);

// Fills the record with the local date and time.
PLATFORM_API void WINAPI GetLocalTime(SYSTEMTIME* lpSystemTime);
