// The device driver interface of the graphics engine, as far as a printer driver's plug-in sees it.
// driver.h checks the layout of the structures.
#pragma once

#include "platform/types.h"

struct DEVMODEW {
  WCHAR dmDeviceName[32];
  WORD dmSpecVersion;
  WORD dmDriverVersion;
  WORD dmSize;
  WORD dmDriverExtra;
  DWORD dmFields;
  SHORT dmOrientation;
  SHORT dmPaperSize;
  SHORT dmPaperLength;  // tenths of a millimetre
  SHORT dmPaperWidth;   // tenths of a millimetre
  SHORT dmScale;
  SHORT dmCopies;
  SHORT dmDefaultSource;
  SHORT dmPrintQuality;
  SHORT dmColor;
  SHORT dmDuplex;
  SHORT dmYResolution;  // dots per inch
  SHORT dmTTOption;
  SHORT dmCollate;
  WCHAR dmFormName[32];
  WORD dmLogPixels;
  DWORD dmBitsPerPel;
  DWORD dmPelsWidth;
  DWORD dmPelsHeight;
  DWORD dmDisplayFlags;
  DWORD dmDisplayFrequency;
  DWORD dmICMMethod;
  DWORD dmICMIntent;
  DWORD dmMediaType;
  DWORD dmDitherType;
  DWORD dmReserved1;
  DWORD dmReserved2;
  DWORD dmPanningWidth;
  DWORD dmPanningHeight;
};
using PDEVMODEW = DEVMODEW*;

inline constexpr SHORT DMORIENT_PORTRAIT = 1;
inline constexpr SHORT DMORIENT_LANDSCAPE = 2;
inline constexpr DWORD DM_ORIENTATION = 0x00000001;
inline constexpr DWORD DM_PAPERSIZE = 0x00000002;
inline constexpr DWORD DM_PAPERLENGTH = 0x00000004;
inline constexpr DWORD DM_PAPERWIDTH = 0x00000008;
inline constexpr DWORD DM_COPIES = 0x00000100;
inline constexpr DWORD DM_PRINTQUALITY = 0x00000400;
inline constexpr DWORD DM_YRESOLUTION = 0x00002000;
inline constexpr DWORD DM_COLLATE = 0x00008000;
inline constexpr WORD DM_SPECVERSION = 0x0401;
inline constexpr SHORT DMPAPER_USER = 256;
inline constexpr SHORT DMCOLLATE_FALSE = 0;
inline constexpr SHORT DMCOLLATE_TRUE = 1;

// One entry of a colour table.
struct RGBQUAD {
  BYTE rgbBlue;
  BYTE rgbGreen;
  BYTE rgbRed;
  BYTE rgbReserved;
};

struct BITMAPINFOHEADER {
  DWORD biSize;
  LONG biWidth;
  LONG biHeight;
  WORD biPlanes;
  WORD biBitCount;
  DWORD biCompression;
  DWORD biSizeImage;
  LONG biXPelsPerMeter;
  LONG biYPelsPerMeter;
  DWORD biClrUsed;
  DWORD biClrImportant;
};
using PBITMAPINFOHEADER = BITMAPINFOHEADER*;

struct SURFOBJ {
  DHSURF dhsurf;
  HSURF hsurf;
  DHPDEV dhpdev;  // for a printer driver's surface: its device object (DEVOBJ)
  HDEV hdev;
  SIZEL sizlBitmap;
  ULONG cjBits;
  PVOID pvBits;
  PVOID pvScan0;
  LONG lDelta;
  ULONG iUniq;
  ULONG iBitmapFormat;
  USHORT iType;
  USHORT fjBitmap;
};

struct STROBJ;
struct FONTOBJ;
struct CLIPOBJ;
struct BRUSHOBJ;
using HGLYPH = ULONG;
using MIX = ULONG;

// Colour description of a device; not used here, kept for the layout.
struct COLORINFO {
  LONG chromaticities[21];
  LONG gammas[3];
  LONG dyeCorrections[6];
};

struct GDIINFO {
  ULONG ulVersion;
  ULONG ulTechnology;
  ULONG ulHorzSize;  // millimetres, or micrometres when negative
  ULONG ulVertSize;
  ULONG ulHorzRes;  // printable pixels
  ULONG ulVertRes;
  ULONG cBitsPixel;
  ULONG cPlanes;
  ULONG ulNumColors;
  ULONG flRaster;
  ULONG ulLogPixelsX;  // dots per inch
  ULONG ulLogPixelsY;
  ULONG flTextCaps;
  ULONG ulDACRed;
  ULONG ulDACGreen;
  ULONG ulDACBlue;
  ULONG ulAspectX;
  ULONG ulAspectY;
  ULONG ulAspectXY;
  LONG xStyleStep;
  LONG yStyleStep;
  LONG denStyleStep;
  POINTL ptlPhysOffset;  // pixels
  SIZEL szlPhysSize;     // pixels
  ULONG ulNumPalReg;
  COLORINFO ciDevice;
  ULONG ulDevicePelsDPI;
  ULONG ulPrimaryOrder;
  ULONG ulHTPatternSize;
  ULONG ulHTOutputFormat;
  ULONG flHTFlags;
  ULONG ulVRefresh;
  ULONG ulBltAlignment;
  ULONG ulPanningHorzRes;
  ULONG ulPanningVertRes;
  ULONG xPanningAlignment;
  ULONG yPanningAlignment;
  ULONG cxHTPat;
  ULONG cyHTPat;
  LPBYTE pHTPatA;
  LPBYTE pHTPatB;
  LPBYTE pHTPatC;
  ULONG flShadeBlend;
  ULONG ulPhysicalPixelCharacteristics;
  ULONG ulPhysicalPixelGamma;
};

struct LOGFONTW {
  LONG lfHeight;
  LONG lfWidth;
  LONG lfEscapement;
  LONG lfOrientation;
  LONG lfWeight;
  BYTE lfFlags[8];
  WCHAR lfFaceName[32];
};

struct DEVINFO {
  FLONG flGraphicsCaps;
  LOGFONTW lfDefaultFont;
  LOGFONTW lfAnsiVarFont;
  LOGFONTW lfAnsiFixFont;
  ULONG cFonts;
  ULONG iDitherFormat;
  USHORT cxDither;
  USHORT cyDither;
  HPALETTE hpalDefault;
  FLONG flGraphicsCaps2;
};

// A function of a driver, without its type.
using PFN = void(APIENTRY*)();

struct DRVFN {
  ULONG iFunc;
  PFN pfn;
};

struct DRVENABLEDATA {
  ULONG iDriverVersion;
  ULONG c;
  DRVFN* pdrvfn;
};
using PDRVENABLEDATA = DRVENABLEDATA*;

inline constexpr ULONG INDEX_DrvSendPage = 32;
inline constexpr ULONG INDEX_DrvStartPage = 33;
inline constexpr ULONG INDEX_DrvEndDoc = 34;
inline constexpr ULONG INDEX_DrvStartDoc = 35;
inline constexpr ULONG INDEX_DrvStartBanding = 57;
inline constexpr ULONG INDEX_DrvNextBand = 58;
inline constexpr FLONG ED_ABORTDOC = 1;

using PFN_DrvStartDoc = BOOL(APIENTRY*)(SURFOBJ* pso, LPWSTR pwszDocName, DWORD dwJobId);
using PFN_DrvEndDoc = BOOL(APIENTRY*)(SURFOBJ* pso, FLONG fl);
using PFN_DrvStartPage = BOOL(APIENTRY*)(SURFOBJ* pso);
using PFN_DrvSendPage = BOOL(APIENTRY*)(SURFOBJ* pso);
using PFN_DrvStartBanding = BOOL(APIENTRY*)(SURFOBJ* pso, POINTL* pptl);
using PFN_DrvNextBand = BOOL(APIENTRY*)(SURFOBJ* pso, POINTL* pptl);
