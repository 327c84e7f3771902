// The driver's helper interface. A plug-in for labels needs only the spool write, which a derived
// class implements.
#pragma once

#include "platform/print_oem.h"

class DriverHelper : public IPrintOemDriverUni {
 public:
  HRESULT DrvGetDriverSetting(PVOID, LPCSTR, PVOID, DWORD, PDWORD, PDWORD) override {
    return E_NOTIMPL;
  }
  HRESULT DrvXMoveTo(PDEVOBJ, INT, DWORD, INT*) override { return E_NOTIMPL; }
  HRESULT DrvYMoveTo(PDEVOBJ, INT, DWORD, INT*) override { return E_NOTIMPL; }
  HRESULT DrvGetStandardVariable(PDEVOBJ, DWORD, PVOID, DWORD, PDWORD) override {
    return E_NOTIMPL;
  }
  HRESULT DrvGetGPDData(PDEVOBJ, DWORD, PVOID, PVOID, DWORD, PDWORD) override { return E_NOTIMPL; }
  HRESULT DrvUniTextOut(SURFOBJ*, STROBJ*, FONTOBJ*, CLIPOBJ*, RECTL*, RECTL*, BRUSHOBJ*, BRUSHOBJ*,
                        POINTL*, MIX) override {
    return E_NOTIMPL;
  }
  HRESULT DrvWriteAbortBuf(PDEVOBJ, PVOID, DWORD, DWORD) override { return E_NOTIMPL; }

 protected:
  ~DriverHelper() = default;
};
