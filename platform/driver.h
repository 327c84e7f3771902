// What a printer driver and its rendering plug-in exchange, in the published 64-bit layout. The
// structures of the driver interface come from the system; the plug-in's own are declared here.
#pragma once

#include "platform/ddi.h"

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
static_assert(sizeof(RGBQUAD) == 4);
static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(offsetof(SURFOBJ, dhpdev) == 16);
static_assert(offsetof(SURFOBJ, sizlBitmap) == 32);
static_assert(offsetof(SURFOBJ, pvBits) == 48);
static_assert(sizeof(SURFOBJ) == 80);
static_assert(sizeof(COLORINFO) == 120);
static_assert(offsetof(GDIINFO, ulHorzSize) == 8);
static_assert(offsetof(GDIINFO, cBitsPixel) == 24);
static_assert(offsetof(GDIINFO, ulLogPixelsX) == 40);
static_assert(offsetof(GDIINFO, ptlPhysOffset) == 88);
static_assert(offsetof(GDIINFO, szlPhysSize) == 96);
static_assert(offsetof(GDIINFO, ciDevice) == 108);
static_assert(offsetof(GDIINFO, pHTPatA) == 280);
static_assert(sizeof(GDIINFO) == 320);
static_assert(sizeof(LOGFONTW) == 92);
static_assert(offsetof(DEVINFO, hpalDefault) == 296);
static_assert(sizeof(DEVINFO) == 312);
static_assert(sizeof(DRVFN) == 16);
static_assert(sizeof(DRVENABLEDATA) == 16);

// Head of every plug-in's private devmode.
struct OEM_DMEXTRAHEADER {
  DWORD dwSize;
  DWORD dwSignature;
  DWORD dwVersion;
};
static_assert(sizeof(OEM_DMEXTRAHEADER) == 12);

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
