// The interfaces between the printer driver and its rendering plug-in, in the published slot order.
#pragma once

#include "platform/com.h"
#include "platform/driver.h"

inline constexpr IID IID_IPrintOemUni2 = {
    0xB91220AC, 0x15CC, 0x4E7A, {0xA2, 0x1E, 0x95, 0x91, 0xF3, 0x4D, 0x6F, 0x6C}};
inline constexpr IID IID_IPrintOemDriverUni = {
    0xD67EBBF1, 0x78BF, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};

struct UNIFONTOBJ;
struct FINVOCATION;
struct OEMMEMORYUSAGE;

struct IPrintOemCommon : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize,
                                            PDWORD pcbNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) = 0;

 protected:
  ~IPrintOemCommon() = default;
};

struct IPrintOemEngine : IPrintOemCommon {
  virtual HRESULT STDMETHODCALLTYPE EnableDriver(DWORD dwDriverVersion, DWORD cbSize,
                                                 PDRVENABLEDATA pded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DisableDriver() = 0;
  virtual HRESULT STDMETHODCALLTYPE EnablePDEV(PDEVOBJ pdevobj, PWSTR pPrinterName, ULONG cPatterns,
                                               HSURF* phsurfPatterns, ULONG cjGdiInfo,
                                               GDIINFO* pGdiInfo, ULONG cjDevInfo,
                                               DEVINFO* pDevInfo, DRVENABLEDATA* pded,
                                               PDEVOEM* pDevOem) = 0;
  virtual HRESULT STDMETHODCALLTYPE DisablePDEV(PDEVOBJ pdevobj) = 0;
  virtual HRESULT STDMETHODCALLTYPE ResetPDEV(PDEVOBJ pdevobjOld, PDEVOBJ pdevobjNew) = 0;

 protected:
  ~IPrintOemEngine() = default;
};

struct IPrintOemUni : IPrintOemEngine {
  virtual HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown* pIUnknown) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetImplementedMethod(PSTR pMethodName) = 0;
  virtual HRESULT STDMETHODCALLTYPE DriverDMS(PVOID pDevObj, PVOID pBuffer, DWORD cbSize,
                                              PDWORD pcbNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE CommandCallback(PDEVOBJ pdevobj, DWORD dwCallbackID,
                                                    DWORD dwCount, PDWORD pdwParams,
                                                    INT* piResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE ImageProcessing(PDEVOBJ pdevobj, PBYTE pSrcBitmap,
                                                    PBITMAPINFOHEADER pBitmapInfoHeader,
                                                    PBYTE pColorTable, DWORD dwCallbackID,
                                                    PIPPARAMS pIPParams, PBYTE* ppbResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE FilterGraphics(PDEVOBJ pdevobj, PBYTE pBuf, DWORD dwLen) = 0;
  virtual HRESULT STDMETHODCALLTYPE Compression(PDEVOBJ pdevobj, PBYTE pInBuf, PBYTE pOutBuf,
                                                DWORD dwInLen, DWORD dwOutLen, INT* piResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE HalftonePattern(PDEVOBJ pdevobj, PBYTE pHTPattern,
                                                    DWORD dwHTPatternX, DWORD dwHTPatternY,
                                                    DWORD dwHTNumPatterns, DWORD dwCallbackID,
                                                    PBYTE pResource, DWORD dwResourceSize) = 0;
  virtual HRESULT STDMETHODCALLTYPE MemoryUsage(PDEVOBJ pdevobj, OEMMEMORYUSAGE* pMemoryUsage) = 0;
  virtual HRESULT STDMETHODCALLTYPE TTYGetInfo(PDEVOBJ pdevobj, DWORD dwInfoIndex, PVOID pOutputBuf,
                                               DWORD dwSize, DWORD* pcbcNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DownloadFontHeader(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj,
                                                       DWORD* pdwResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE DownloadCharGlyph(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj,
                                                      HGLYPH hGlyph, PDWORD pdwWidth,
                                                      DWORD* pdwResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE TTDownloadMethod(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj,
                                                     DWORD* pdwResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE OutputCharStr(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj, DWORD dwType,
                                                  DWORD dwCount, PVOID pGlyph) = 0;
  virtual HRESULT STDMETHODCALLTYPE SendFontCmd(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj,
                                                FINVOCATION* pFInv) = 0;
  virtual HRESULT STDMETHODCALLTYPE TextOutAsBitmap(SURFOBJ* pso, STROBJ* pstro, FONTOBJ* pfo,
                                                    CLIPOBJ* pco, RECTL* prclExtra,
                                                    RECTL* prclOpaque, BRUSHOBJ* pboFore,
                                                    BRUSHOBJ* pboOpaque, POINTL* pptlOrg,
                                                    MIX mix) = 0;

 protected:
  ~IPrintOemUni() = default;
};

struct IPrintOemUni2 : IPrintOemUni {
  virtual HRESULT STDMETHODCALLTYPE WritePrinter(PDEVOBJ pdevobj, PVOID pBuf, DWORD cbBuffer,
                                                 PDWORD pcbWritten) = 0;

 protected:
  ~IPrintOemUni2() = default;
};

// The driver's helper interface.
struct IPrintOemDriverUni : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID pdriverobj, LPCSTR Feature,
                                                        PVOID pOutput, DWORD cbSize,
                                                        PDWORD pcbNeeded,
                                                        PDWORD pdwOptionsReturned) = 0;
  virtual HRESULT STDMETHODCALLTYPE DrvWriteSpoolBuf(PDEVOBJ pdevobj, PVOID pBuffer, DWORD cbSize,
                                                     DWORD* pdwResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE DrvXMoveTo(PDEVOBJ pdevobj, INT x, DWORD dwFlags,
                                               INT* piResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE DrvYMoveTo(PDEVOBJ pdevobj, INT y, DWORD dwFlags,
                                               INT* piResult) = 0;
  virtual HRESULT STDMETHODCALLTYPE DrvGetStandardVariable(PDEVOBJ pdevobj, DWORD dwIndex,
                                                           PVOID pBuffer, DWORD cbSize,
                                                           PDWORD pcbNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DrvGetGPDData(PDEVOBJ pdevobj, DWORD dwType, PVOID pBuffer,
                                                  PVOID pReserved, DWORD cbSize,
                                                  PDWORD pcbNeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE DrvUniTextOut(SURFOBJ* pso, STROBJ* pstro, FONTOBJ* pfo,
                                                  CLIPOBJ* pco, RECTL* prclExtra, RECTL* prclOpaque,
                                                  BRUSHOBJ* pboFore, BRUSHOBJ* pboOpaque,
                                                  POINTL* pptlBrushOrg, MIX mix) = 0;
  virtual HRESULT STDMETHODCALLTYPE DrvWriteAbortBuf(PDEVOBJ pdevobj, PVOID pBuffer, DWORD cbSize,
                                                     DWORD dwWait) = 0;

 protected:
  ~IPrintOemDriverUni() = default;
};
