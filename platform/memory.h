// Local and global memory blocks. On this platform both come from one heap; a handle is the
// block's address. Each block is freed by the matching call, by whoever owns it.
#pragma once

#include "platform/types.h"

inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_ZEROINIT = 0x0040;
inline constexpr UINT LPTR = LMEM_FIXED | LMEM_ZEROINIT;
inline constexpr UINT GMEM_FIXED = 0x0000;
inline constexpr UINT GMEM_MOVEABLE = 0x0002;
inline constexpr UINT GMEM_ZEROINIT = 0x0040;
inline constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

// Returns a block of uBytes bytes (a size of 0 gives a valid block), zero-filled with *_ZEROINIT.
// Null when there is no memory; the last error is then ERROR_NOT_ENOUGH_MEMORY.
PLATFORM_API HLOCAL WINAPI LocalAlloc(UINT uFlags, SIZE_T uBytes);
PLATFORM_API HGLOBAL WINAPI GlobalAlloc(UINT uFlags, SIZE_T dwBytes);

// Frees a block (null is allowed) and returns null.
PLATFORM_API HLOCAL WINAPI LocalFree(HLOCAL hMem);
PLATFORM_API HGLOBAL WINAPI GlobalFree(HGLOBAL hMem);
