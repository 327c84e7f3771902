// Reading files the way the platform's C library reads them in text mode.
#pragma once

#include <cstdio>

#include "platform/types.h"

inline constexpr int _SH_DENYNO = 0x40;

// Opens the file for reading ("r" or "rt": text mode; "rb": as it is). The path is 8-bit text in
// the ANSI code page; a backslash separates folders as a slash does. In text mode CR LF arrives as
// LF and a byte 0x1A ends the content. Only regular files open; anything else (folder, FIFO,
// device) gives null at once and never blocks. The caller closes the stream with std::fclose.
PLATFORM_API std::FILE* _fsopen(const char* filename, const char* mode, int shflag);
