// Palettes of the graphics engine. A handle is valid until EngDeletePalette; the driver that hands
// a palette out as a device's default palette deletes it when the device goes.
#pragma once

#include "platform/types.h"

inline constexpr ULONG PAL_INDEXED = 0x00000001;
inline constexpr ULONG PAL_BITFIELDS = 0x00000002;
inline constexpr ULONG PAL_RGB = 0x00000004;
inline constexpr ULONG PAL_BGR = 0x00000008;

struct PALETTEENTRY {
  BYTE peRed;
  BYTE peGreen;
  BYTE peBlue;
  BYTE peFlags;
};
static_assert(sizeof(PALETTEENTRY) == 4);

// Creates a palette: PAL_INDEXED with cColors colours (0x00BBGGRR each) at pulColors, or one of the
// kinds without entries. Null on failure.
PLATFORM_API HPALETTE APIENTRY EngCreatePalette(ULONG iMode, ULONG cColors, ULONG* pulColors,
                                                FLONG flRed, FLONG flGreen, FLONG flBlue);
PLATFORM_API BOOL APIENTRY EngDeletePalette(HPALETTE hPal);

// Copies entries iStart to iStart + cEntries - 1 and returns how many there were to copy; 0 for a
// palette without entries or a handle that is none. With a null buffer returns the palette's size.
PLATFORM_API UINT WINAPI GetPaletteEntries(HPALETTE hPal, UINT iStart, UINT cEntries,
                                           PALETTEENTRY* pPalEntries);
