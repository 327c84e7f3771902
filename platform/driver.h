// Structures of the printer driver interface, with the platform's published 64-bit layout.
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
static_assert(sizeof(DEVMODEW) == 220);
static_assert(offsetof(DEVMODEW, dmSize) == 68);
static_assert(offsetof(DEVMODEW, dmFields) == 72);
static_assert(offsetof(DEVMODEW, dmOrientation) == 76);
static_assert(offsetof(DEVMODEW, dmPaperLength) == 80);
static_assert(offsetof(DEVMODEW, dmPaperWidth) == 82);
static_assert(offsetof(DEVMODEW, dmCopies) == 86);
static_assert(offsetof(DEVMODEW, dmYResolution) == 96);
static_assert(offsetof(DEVMODEW, dmCollate) == 100);
static_assert(offsetof(DEVMODEW, dmFormName) == 102);
static_assert(offsetof(DEVMODEW, dmBitsPerPel) == 168);

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

// Head of every plug-in's private devmode.
struct OEM_DMEXTRAHEADER {
  DWORD dwSize;
  DWORD dwSignature;
  DWORD dwVersion;
};
static_assert(sizeof(OEM_DMEXTRAHEADER) == 12);

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
static_assert(sizeof(BITMAPINFOHEADER) == 40);

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
static_assert(offsetof(SURFOBJ, dhpdev) == 16);
static_assert(offsetof(SURFOBJ, sizlBitmap) == 32);
static_assert(offsetof(SURFOBJ, pvBits) == 48);
static_assert(sizeof(SURFOBJ) == 80);

struct DEVOBJ;
using PDEVOBJ = DEVOBJ*;

// The driver's procedures for the plug-in. Only the spool write is ever called from here.
struct DRVPROCS {
  DWORD(APIENTRY* DrvWriteSpoolBuf)(PDEVOBJ pdevobj, PVOID pBuffer, DWORD cbSize);
  PVOID reserved[15];
};
using PDRVPROCS = DRVPROCS*;

// The driver's device object.
struct DEVOBJ {
  DWORD dwSize;
  PVOID pdevOEM;  // the plug-in's device state
  HANDLE hEngine;
  HANDLE hPrinter;
  HANDLE hOEM;  // the driver's handle of the plug-in
  PDEVMODEW pPublicDM;
  PVOID pOEMDM;  // the private devmode
  PDRVPROCS pDrvProcs;
};
static_assert(offsetof(DEVOBJ, pdevOEM) == 8);
static_assert(offsetof(DEVOBJ, hEngine) == 16);
static_assert(offsetof(DEVOBJ, hPrinter) == 24);
static_assert(offsetof(DEVOBJ, hOEM) == 32);
static_assert(offsetof(DEVOBJ, pPublicDM) == 40);
static_assert(offsetof(DEVOBJ, pOEMDM) == 48);
static_assert(offsetof(DEVOBJ, pDrvProcs) == 56);
static_assert(sizeof(DEVOBJ) == 64);

using PDEVOEM = PVOID;

// Colour description of a device; not used here, kept for the layout.
struct COLORINFO {
  LONG chromaticities[21];
  LONG gammas[3];
  LONG dyeCorrections[6];
};
static_assert(sizeof(COLORINFO) == 120);

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
static_assert(offsetof(GDIINFO, ulHorzSize) == 8);
static_assert(offsetof(GDIINFO, cBitsPixel) == 24);
static_assert(offsetof(GDIINFO, ulLogPixelsX) == 40);
static_assert(offsetof(GDIINFO, ptlPhysOffset) == 88);
static_assert(offsetof(GDIINFO, szlPhysSize) == 96);
static_assert(offsetof(GDIINFO, ciDevice) == 108);
static_assert(offsetof(GDIINFO, pHTPatA) == 280);
static_assert(sizeof(GDIINFO) == 320);

struct LOGFONTW {
  LONG lfHeight;
  LONG lfWidth;
  LONG lfEscapement;
  LONG lfOrientation;
  LONG lfWeight;
  BYTE lfFlags[8];
  WCHAR lfFaceName[32];
};
static_assert(sizeof(LOGFONTW) == 92);

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
static_assert(offsetof(DEVINFO, hpalDefault) == 296);
static_assert(sizeof(DEVINFO) == 312);

// A function of a driver, without its type.
using PFN = void(APIENTRY*)();

struct DRVFN {
  ULONG iFunc;
  PFN pfn;
};
static_assert(sizeof(DRVFN) == 16);

struct DRVENABLEDATA {
  ULONG iDriverVersion;
  ULONG c;
  DRVFN* pdrvfn;
};
using PDRVENABLEDATA = DRVENABLEDATA*;
static_assert(sizeof(DRVENABLEDATA) == 16);

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

// Parameters of one band for ImageProcessing.
struct IPPARAMS {
  DWORD dwSize;
  POINT ptOffset;  // pixels in the page
  PSTR pHalftoneOption;
  BOOL bBlankBand;
};
using PIPPARAMS = IPPARAMS*;
static_assert(offsetof(IPPARAMS, ptOffset) == 4);
static_assert(offsetof(IPPARAMS, pHalftoneOption) == 16);
static_assert(offsetof(IPPARAMS, bBlankBand) == 24);
static_assert(sizeof(IPPARAMS) == 32);

// Parameter block of the devmode operations.
struct OEMDMPARAM {
  DWORD cbSize;
  PVOID pdriverobj;
  HANDLE hPrinter;
  HANDLE hModule;
  PDEVMODEW pPublicDMIn;
  PDEVMODEW pPublicDMOut;
  PVOID pOEMDMIn;
  PVOID pOEMDMOut;
  DWORD cbBufSize;
};
using POEMDMPARAM = OEMDMPARAM*;
static_assert(offsetof(OEMDMPARAM, pOEMDMIn) == 48);
static_assert(offsetof(OEMDMPARAM, cbBufSize) == 64);
static_assert(sizeof(OEMDMPARAM) == 72);

inline constexpr DWORD OEMDM_SIZE = 1;
inline constexpr DWORD OEMDM_DEFAULT = 2;
inline constexpr DWORD OEMDM_CONVERT = 3;
inline constexpr DWORD OEMDM_MERGE = 4;

inline constexpr DWORD OEMGI_GETSIGNATURE = 1;
inline constexpr DWORD OEMGI_GETVERSION = 3;
inline constexpr DWORD OEMGI_GETREQUESTEDHELPERINTERFACES = 5;
