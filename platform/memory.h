// Local and global memory blocks. On this platform both come from one heap; a handle is the
// block's address. Each block is freed by the matching call, by whoever owns it.
#pragma once

#include "platform/types.h"

inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_MOVEABLE = 0x0002;
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

// Makes a block larger or smaller and returns its new place; what is added has no value. The only
// flags are LMEM_MOVEABLE. Null, the block as it was, when there is no memory; the last error is
// then ERROR_NOT_ENOUGH_MEMORY, or ERROR_INVALID_PARAMETER for no block or other flags.
PLATFORM_API HLOCAL WINAPI LocalReAlloc(HLOCAL hMem, SIZE_T uBytes, UINT uFlags);

// Frees a block (null is allowed) and returns null.
PLATFORM_API HLOCAL WINAPI LocalFree(HLOCAL hMem);
PLATFORM_API HGLOBAL WINAPI GlobalFree(HGLOBAL hMem);
