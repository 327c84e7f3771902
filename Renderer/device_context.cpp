// The methods of the plug-in object that work on a driver instance or a device context.

#include <iterator>
#include <utility>

#include "Renderer/band_capture.h"
#include "Renderer/exception_guard.h"
#include "Renderer/gdiplus_guard.h"
#include "Renderer/hooks.h"
#include "Renderer/oem_uni2.h"
#include "Renderer/page_geometry.h"
#include "config/log.h"
#include "config/stock_catalogue.h"
#include "platform/palette.h"

namespace {

constexpr ULONG kDriverVersion = 0x10000;
constexpr ULONG kBitsPerPixel = 24;
constexpr LONG kMicrometresPerTenth = 100;

DRVFN hookTable[] = {
    {INDEX_DrvStartDoc, reinterpret_cast<PFN>(OEMStartDoc)},
    {INDEX_DrvEndDoc, reinterpret_cast<PFN>(OEMEndDoc)},
    {INDEX_DrvStartPage, reinterpret_cast<PFN>(OEMStartPage)},
    {INDEX_DrvSendPage, reinterpret_cast<PFN>(OEMSendPage)},
    {INDEX_DrvStartBanding, reinterpret_cast<PFN>(OEMStartBanding)},
    {INDEX_DrvNextBand, reinterpret_cast<PFN>(OEMNextBand)},
};

HRESULT InvalidArgument(const char* method) {
  LogError(kRendering, "Renderer.COemUni2.%s END (E_FAIL, invalid argument)", method);
  SetLastError(ERROR_INVALID_PARAMETER);
  return E_FAIL;
}

// The margins of the stock that the private devmode selects. Without it, those of the first stock;
// without any stock, the private devmode's own.
Margins ChooseMargins(PDEVOBJ pdevobj) {
  auto* devmode = static_cast<OEMDEV*>(pdevobj->pOEMDM);
  if (devmode == nullptr) return {};
  ConvertEp2Qor(devmode);

  StockList stocks;
  LoadStocksForPrinter(stocks, pdevobj->hPrinter);
  bool selected = false;
  const StockItem* stock = ChooseStock(stocks, devmode->guidSelectedStock, &selected);
  if (stock == nullptr) {
    LogWarning(kRenderingPaper,
               "Renderer.COemUni2.EnablePDEV: no papers defined. using values from settings "
               "dialog for GDIINFO");
    return {devmode->dwUnprintableLeft, devmode->dwUnprintableRight, devmode->dwUnprintableTop,
            devmode->dwUnprintableBottom};
  }
  const std::string name = LogText(stock->displayName.c_str());
  if (selected) {
    LogTrace(kRenderingPaper, "Renderer.COemUni2.EnablePDEV: using paper '%s' for GDIINFO",
             name.c_str());
  } else {
    LogWarning(kRenderingPaper,
               "Renderer.COemUni2.EnablePDEV: no paper selected. using first defined paper '%s' "
               "for GDIINFO",
               name.c_str());
  }
  return {stock->dwUnprintableLeft, stock->dwUnprintableRight, stock->dwUnprintableTop,
          stock->dwUnprintableBottom};
}

void FitGdiInfo(PDEVOBJ pdevobj, GDIINFO& gdiInfo) {
  const DEVMODEW& publicDevmode = *pdevobj->pPublicDM;
  Margins margins = ChooseMargins(pdevobj);
  LONG widthUm = publicDevmode.dmPaperWidth * kMicrometresPerTenth;
  LONG lengthUm = publicDevmode.dmPaperLength * kMicrometresPerTenth;
  if (publicDevmode.dmOrientation != DMORIENT_PORTRAIT) {
    LogWarning(kRenderingPaper,
               "Renderer.COemUni2.EnablePDEV: switching paper dimensions and NPAs because of "
               "landscape mode");
    std::swap(widthUm, lengthUm);
    margins = TurnedForLandscape(margins);
  }
  const PageGeometry geometry =
      ComputePageGeometry(widthUm, lengthUm, margins, gdiInfo.ulLogPixelsX, gdiInfo.ulLogPixelsY);
  const std::string modifications = UpdateGdiInfo(gdiInfo, geometry);
  if (!modifications.empty()) {
    LogTrace(kRenderingPaper, " GDI-Info modifications: %s", modifications.c_str());
  }
  LogTrace(kRenderingPaper,
           "Renderer.COemUni2.EnablePDEV: GDI-Info values: Orientation=%d Size=(%d/%d), "
           "Res=(%d/%d), PhysSize=(%d/%d), PhysOffset=(%d/%d).",
           publicDevmode.dmOrientation, static_cast<LONG>(0u - gdiInfo.ulHorzSize),
           static_cast<LONG>(0u - gdiInfo.ulVertSize), static_cast<LONG>(gdiInfo.ulHorzRes),
           static_cast<LONG>(gdiInfo.ulVertRes), gdiInfo.szlPhysSize.cx, gdiInfo.szlPhysSize.cy,
           gdiInfo.ptlPhysOffset.x, gdiInfo.ptlPhysOffset.y);
}

void SaveDriverFunctions(COemPDEV& state, const DRVENABLEDATA& ded) {
  for (ULONG i = 0; i < ded.c; ++i) {
    const PFN pfn = ded.pdrvfn[i].pfn;
    switch (ded.pdrvfn[i].iFunc) {
      case INDEX_DrvStartDoc:
        state.pfnDrvStartDoc = reinterpret_cast<PFN_DrvStartDoc>(pfn);
        break;
      case INDEX_DrvStartPage:
        state.pfnDrvStartPage = reinterpret_cast<PFN_DrvStartPage>(pfn);
        break;
      case INDEX_DrvSendPage:
        state.pfnDrvSendPage = reinterpret_cast<PFN_DrvSendPage>(pfn);
        break;
      case INDEX_DrvEndDoc:
        state.pfnDrvEndDoc = reinterpret_cast<PFN_DrvEndDoc>(pfn);
        break;
      case INDEX_DrvStartBanding:
        state.pfnDrvStartBanding = reinterpret_cast<PFN_DrvStartBanding>(pfn);
        break;
      case INDEX_DrvNextBand:
        state.pfnDrvNextBand = reinterpret_cast<PFN_DrvNextBand>(pfn);
        break;
    }
  }
}

void SaveGeometry(COemPDEV& state, const GDIINFO& gdiInfo) {
  state.gdiHorzSize = static_cast<LONG>(gdiInfo.ulHorzSize);
  state.gdiVertSize = static_cast<LONG>(gdiInfo.ulVertSize);
  state.gdiHorzRes = static_cast<LONG>(gdiInfo.ulHorzRes);
  state.gdiVertRes = static_cast<LONG>(gdiInfo.ulVertRes);
  state.gdiPhysSizeCx = gdiInfo.szlPhysSize.cx;
  state.gdiPhysSizeCy = gdiInfo.szlPhysSize.cy;
  state.gdiPhysOffsetX = gdiInfo.ptlPhysOffset.x;
  state.gdiPhysOffsetY = gdiInfo.ptlPhysOffset.y;
}

}  // namespace

HRESULT COemUni2::EnableDriver(DWORD, DWORD, PDRVENABLEDATA pded) {
  LogTrace(kRendering, "Renderer.COemUni2.EnableDriver BEGIN");
  if (pded == nullptr) return InvalidArgument("EnableDriver");
  pded->iDriverVersion = kDriverVersion;
  pded->c = std::size(hookTable);
  pded->pdrvfn = hookTable;
  g_gdiPlusGuard.Start();
  LogTrace(kRendering, "Renderer.COemUni2.EnableDriver END (S_OK)");
  return S_OK;
}

HRESULT COemUni2::DisableDriver() {
  LogTrace(kRendering, "Renderer.COemUni2.DisableDriver BEGIN");
  ReleaseDriverInterface();
  g_gdiPlusGuard.Stop();
  LogTrace(kRendering, "Renderer.COemUni2.DisableDriver END (S_OK)");
  return S_OK;
}

HRESULT COemUni2::EnablePDEV(PDEVOBJ pdevobj, PWSTR, ULONG, HSURF*, ULONG, GDIINFO* pGdiInfo, ULONG,
                             DEVINFO* pDevInfo, DRVENABLEDATA* pded, PDEVOEM* pDevOem) {
  LogTrace(kRendering, "Renderer.COemUni2.EnablePDEV BEGIN");
  if (pdevobj == nullptr || pdevobj->pPublicDM == nullptr || pGdiInfo == nullptr ||
      pDevInfo == nullptr || pded == nullptr || (pded->c != 0 && pded->pdrvfn == nullptr) ||
      pDevOem == nullptr) {
    return InvalidArgument("EnablePDEV");
  }
  const DEVMODEW& publicDevmode = *pdevobj->pPublicDM;
  LogTrace(kRenderingPaper,
           "Renderer.COemUni2.EnablePDEV: DM.PaperSize=%d, DM.PaperWidth=%d, DM.PaperLength=%d",
           publicDevmode.dmPaperSize, publicDevmode.dmPaperWidth, publicDevmode.dmPaperLength);
  if (pGdiInfo->cBitsPixel != kBitsPerPixel) {
    LogError(kRenderingPaper,
             "Renderer.COemUni2.EnablePDEV: BPP != 24 !!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!");
  }
  const HRESULT hr = Guarded(E_FAIL, [&] {
    FitGdiInfo(pdevobj, *pGdiInfo);
    auto* state = new COemPDEV;
    SaveDriverFunctions(*state, *pded);
    SaveGeometry(*state, *pGdiInfo);
    if (pGdiInfo->cBitsPixel == kBitsPerPixel) {
      pDevInfo->hpalDefault = EngCreatePalette(PAL_BGR, 0, nullptr, 0, 0, 0);
    }
    state->hDevicePalette = pDevInfo->hpalDefault;
    *pDevOem = state;
    return S_OK;
  });
  if (SUCCEEDED(hr)) {
    LogTrace(kRendering, "Renderer.COemUni2.EnablePDEV END (S_OK)");
  } else {
    LogError(kRendering, "Renderer.COemUni2.EnablePDEV END (E_FAIL, no memory for pOemPDEV)");
  }
  return hr;
}

HRESULT COemUni2::DisablePDEV(PDEVOBJ pdevobj) {
  LogTrace(kRendering, "Renderer.COemUni2.DisablePDEV BEGIN");
  if (COemPDEV* state = DeviceState(pdevobj)) {
    delete state;
    pdevobj->pdevOEM = nullptr;
  }
  LogTrace(kRendering, "Renderer.COemUni2.DisablePDEV END (S_OK)");
  return S_OK;
}

HRESULT COemUni2::ResetPDEV(PDEVOBJ pdevobjOld, PDEVOBJ pdevobjNew) {
  const COemPDEV* oldState = DeviceState(pdevobjOld);
  COemPDEV* newState = DeviceState(pdevobjNew);
  LogTrace(kRendering, "ResetPDEV BEGIN (Old=%p, New=%p)", static_cast<const void*>(oldState),
           static_cast<void*>(newState));
  const HRESULT hr = Guarded(E_FAIL, [&] {
    if (oldState != nullptr && newState != nullptr && oldState != newState) *newState = *oldState;
    return S_OK;
  });
  if (SUCCEEDED(hr)) {
    LogTrace(kRendering, "ResetPDEV END (S_OK)");
  } else {
    LogError(kRendering, "ResetPDEV END (E_FAIL, no memory)");
  }
  return hr;
}

HRESULT COemUni2::ImageProcessing(PDEVOBJ pdevobj, PBYTE pSrcBitmap,
                                  PBITMAPINFOHEADER pBitmapInfoHeader, PBYTE, DWORD dwCallbackID,
                                  PIPPARAMS pIPParams, PBYTE* ppbResult) {
  if (ppbResult != nullptr) *ppbResult = nullptr;
  COemPDEV* state = DeviceState(pdevobj);
  if (state == nullptr || pdevobj->pPublicDM == nullptr || pBitmapInfoHeader == nullptr ||
      pIPParams == nullptr || ppbResult == nullptr ||
      (pSrcBitmap == nullptr && !pIPParams->bBlankBand)) {
    LogError(kRendering, "ImageProcessing END (E_FAIL, invalid argument)");
    SetLastError(ERROR_INVALID_PARAMETER);
    return E_FAIL;
  }
  const Band band = {.pixels = pSrcBitmap,
                     .header = pBitmapInfoHeader,
                     .format = dwCallbackID,
                     .offset = pIPParams->ptOffset,
                     .blank = pIPParams->bBlankBand != FALSE,
                     .orientation = pdevobj->pPublicDM->dmOrientation};
  const auto end = [](LONG start, LONG length) {
    return static_cast<LONG>(static_cast<DWORD>(start) + static_cast<DWORD>(length));
  };
  if (band.orientation == DMORIENT_PORTRAIT) {
    LogTrace(kRendering, "ImageProcessing BEGIN (Portrait, y-Pixel %d-%d, OemPDEV=%p)",
             band.offset.y, end(band.offset.y, band.header->biHeight), static_cast<void*>(state));
  } else {
    LogTrace(kRendering, "ImageProcessing BEGIN (Landscape, x-Pixel %d-%d, OemPDEV=%p)",
             band.offset.x, end(band.offset.x, band.header->biWidth), static_cast<void*>(state));
  }
  if (!CaptureBand(*state, band)) return E_FAIL;
  *ppbResult = reinterpret_cast<PBYTE>(ULONG_PTR{1});  // no bitmap goes back to the driver
  LogTrace(kRendering, "ImageProcessing END (S_OK)");
  return S_OK;
}

HRESULT COemUni2::FilterGraphics(PDEVOBJ pdevobj, PBYTE pBuf, DWORD dwLen) {
  LogTrace(kRendering, "Renderer.COemUni2.FilterGraphics BEGIN");
  DWORD written = 0;
  if (m_pDriverUni != nullptr) m_pDriverUni->DrvWriteSpoolBuf(pdevobj, pBuf, dwLen, &written);
  if (m_pDriverUni == nullptr || written != dwLen) {
    LogTrace(kRendering, "Renderer.COemUni2.FilterGraphics END (S_FALSE, DrvWriteSpoolBuf failed)");
    return S_FALSE;
  }
  LogTrace(kRendering, "Renderer.COemUni2.FilterGraphics END (S_OK)");
  return S_OK;
}
