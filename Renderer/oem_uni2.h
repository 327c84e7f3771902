// The plug-in object that the printer driver calls. Reference counting is thread-safe; the driver
// calls the methods of one device context from one thread at a time. The methods never throw.
#pragma once

#include "platform/print_oem.h"
#include "platform/synch.h"

extern LONG g_cObjects;  // live plug-in objects

class COemUni2 final : public IPrintOemUni2 {
 public:
  COemUni2();

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT STDMETHODCALLTYPE GetInfo(DWORD dwMode, PVOID pBuffer, DWORD cbSize,
                                    PDWORD pcbNeeded) override;
  HRESULT STDMETHODCALLTYPE DevMode(DWORD dwMode, POEMDMPARAM pOemDMParam) override;

  HRESULT STDMETHODCALLTYPE EnableDriver(DWORD dwDriverVersion, DWORD cbSize,
                                         PDRVENABLEDATA pded) override;
  HRESULT STDMETHODCALLTYPE DisableDriver() override;
  HRESULT STDMETHODCALLTYPE EnablePDEV(PDEVOBJ pdevobj, PWSTR pPrinterName, ULONG cPatterns,
                                       HSURF* phsurfPatterns, ULONG cjGdiInfo, GDIINFO* pGdiInfo,
                                       ULONG cjDevInfo, DEVINFO* pDevInfo, DRVENABLEDATA* pded,
                                       PDEVOEM* pDevOem) override;
  HRESULT STDMETHODCALLTYPE DisablePDEV(PDEVOBJ pdevobj) override;
  HRESULT STDMETHODCALLTYPE ResetPDEV(PDEVOBJ pdevobjOld, PDEVOBJ pdevobjNew) override;

  HRESULT STDMETHODCALLTYPE PublishDriverInterface(IUnknown* pIUnknown) override;
  HRESULT STDMETHODCALLTYPE GetImplementedMethod(PSTR pMethodName) override;
  HRESULT STDMETHODCALLTYPE DriverDMS(PVOID pDevObj, PVOID pBuffer, DWORD cbSize,
                                      PDWORD pcbNeeded) override;
  HRESULT STDMETHODCALLTYPE CommandCallback(PDEVOBJ pdevobj, DWORD dwCallbackID, DWORD dwCount,
                                            PDWORD pdwParams, INT* piResult) override;
  HRESULT STDMETHODCALLTYPE ImageProcessing(PDEVOBJ pdevobj, PBYTE pSrcBitmap,
                                            PBITMAPINFOHEADER pBitmapInfoHeader, PBYTE pColorTable,
                                            DWORD dwCallbackID, PIPPARAMS pIPParams,
                                            PBYTE* ppbResult) override;
  HRESULT STDMETHODCALLTYPE FilterGraphics(PDEVOBJ pdevobj, PBYTE pBuf, DWORD dwLen) override;
  HRESULT STDMETHODCALLTYPE Compression(PDEVOBJ pdevobj, PBYTE pInBuf, PBYTE pOutBuf, DWORD dwInLen,
                                        DWORD dwOutLen, INT* piResult) override;
  HRESULT STDMETHODCALLTYPE HalftonePattern(PDEVOBJ pdevobj, PBYTE pHTPattern, DWORD dwHTPatternX,
                                            DWORD dwHTPatternY, DWORD dwHTNumPatterns,
                                            DWORD dwCallbackID, PBYTE pResource,
                                            DWORD dwResourceSize) override;
  HRESULT STDMETHODCALLTYPE MemoryUsage(PDEVOBJ pdevobj, OEMMEMORYUSAGE* pMemoryUsage) override;
  HRESULT STDMETHODCALLTYPE TTYGetInfo(PDEVOBJ pdevobj, DWORD dwInfoIndex, PVOID pOutputBuf,
                                       DWORD dwSize, DWORD* pcbcNeeded) override;
  HRESULT STDMETHODCALLTYPE DownloadFontHeader(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj,
                                               DWORD* pdwResult) override;
  HRESULT STDMETHODCALLTYPE DownloadCharGlyph(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj, HGLYPH hGlyph,
                                              PDWORD pdwWidth, DWORD* pdwResult) override;
  HRESULT STDMETHODCALLTYPE TTDownloadMethod(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj,
                                             DWORD* pdwResult) override;
  HRESULT STDMETHODCALLTYPE OutputCharStr(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj, DWORD dwType,
                                          DWORD dwCount, PVOID pGlyph) override;
  HRESULT STDMETHODCALLTYPE SendFontCmd(PDEVOBJ pdevobj, UNIFONTOBJ* pUFObj,
                                        FINVOCATION* pFInv) override;
  HRESULT STDMETHODCALLTYPE TextOutAsBitmap(SURFOBJ* pso, STROBJ* pstro, FONTOBJ* pfo, CLIPOBJ* pco,
                                            RECTL* prclExtra, RECTL* prclOpaque, BRUSHOBJ* pboFore,
                                            BRUSHOBJ* pboOpaque, POINTL* pptlOrg, MIX mix) override;
  HRESULT STDMETHODCALLTYPE WritePrinter(PDEVOBJ pdevobj, PVOID pBuf, DWORD cbBuffer,
                                         PDWORD pcbWritten) override;

 private:
  ~COemUni2();
  void ReleaseDriverInterface();

  LONG m_cRef = 1;
  IPrintOemDriverUni* m_pDriverUni = nullptr;  // one reference
};
