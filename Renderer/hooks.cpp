#include "Renderer/hooks.h"

#include "Renderer/exception_guard.h"
#include "commands/job_stream.h"
#include "commands/print_commands.h"
#include "config/device_state.h"
#include "config/log.h"
#include "imaging/page_pipeline.h"

namespace {

// The device object behind a surface, null (last error set) unless it has a state.
PDEVOBJ DeviceOf(const SURFOBJ* pso) {
  auto* device = static_cast<PDEVOBJ>(pso == nullptr ? nullptr : pso->dhpdev);
  if (DeviceState(device) != nullptr) return device;
  LogError(kRendering, "A document hook was called without a device state");
  SetLastError(ERROR_INVALID_PARAMETER);
  return nullptr;
}

// The same for a hook that writes: it needs both devmodes and the spool write too.
PDEVOBJ WritableDeviceOf(const SURFOBJ* pso) {
  const PDEVOBJ device = DeviceOf(pso);
  if (device == nullptr ||
      (device->pPublicDM != nullptr && device->pOEMDM != nullptr && device->pDrvProcs != nullptr &&
       device->pDrvProcs->DrvWriteSpoolBuf != nullptr)) {
    return device;
  }
  LogError(kRendering, "A document hook was called without a complete device object");
  SetLastError(ERROR_INVALID_PARAMETER);
  return nullptr;
}

// Calls the driver's own function; a driver that gave none has nothing to succeed at.
template <typename Function, typename... Arguments>
BOOL CallDriver(Function function, Arguments... arguments) {
  return function == nullptr ? FALSE : function(arguments...);
}

// Both results as the hook's own, 1 or 0.
BOOL Both(INT ok, BOOL driverResult) { return ok != 0 && driverResult != 0 ? TRUE : FALSE; }

// Emits the captured page and prepares the next one; not thrown through.
INT ProcessPage(SURFOBJ* pso) {
  return Guarded(INT{0}, [&] { return ProcessImageData(pso); });
}

// Runs one writer; 0 when it ran out of memory.
template <typename Writer>
INT Write(Writer&& writer) {
  return Guarded(INT{0}, [&] {
    writer();
    return INT{1};
  });
}

using BandingFunction = BOOL(APIENTRY*)(SURFOBJ*, POINTL*);

// hook and function are their names in the log.
BOOL PassBand(const char* hook, const char* function, BandingFunction COemPDEV::*saved,
              SURFOBJ* pso, POINTL* pptl) {
  const PDEVOBJ device = DeviceOf(pso);
  if (device == nullptr) return FALSE;
  COemPDEV* state = DeviceState(device);
  const POINTL origin = pptl == nullptr ? POINTL{0, 0} : *pptl;
  LogTrace(kRendering, "%s BEGIN (OemPDEV=%p, pptl.x=%d, pptl.y=%d)", hook,
           static_cast<void*>(state), origin.x, origin.y);
  LogTrace(kNoCategory, "%s calling %s...", hook, function);
  const BOOL result = CallDriver(state->*saved, pso, pptl);
  LogTrace(kRendering, "%s END (%d)", hook, result);
  return result;
}

}  // namespace

BOOL APIENTRY OEMStartDoc(SURFOBJ* pso, LPWSTR pwszDocName, DWORD dwJobId) {
  const PDEVOBJ device = WritableDeviceOf(pso);
  if (device == nullptr) return FALSE;
  COemPDEV* state = DeviceState(device);
  const bool reset = pwszDocName == nullptr && dwJobId == 0;  // the state came with ResetPDEV
  INT ok = 1;
  if (reset) {
    LogTrace(kRendering, "OEMStartDoc BEGIN (ResetDC, dwJobId=%d, OemPDEV=%p, pBitmapBuffer=%p)", 0,
             static_cast<void*>(state), static_cast<void*>(state->pBitmapBuffer));
  } else {
    LogTrace(kRendering, "OEMStartDoc BEGIN (dwJobId=%d, OemPDEV=%p)", static_cast<LONG>(dwJobId),
             static_cast<void*>(state));
    state->dwPageCount = 0;
    if (!state->bJobHeaderSent) {
      ok = Write([&] { WriteJobHeader(device, pwszDocName); });
      state->bJobHeaderSent = ok != 0;
    }
    state->dwJobId = dwJobId;
  }
  LogTrace(kNoCategory, "OEMStartDoc calling DrvStartDoc...");
  const BOOL result = CallDriver(state->pfnDrvStartDoc, pso, pwszDocName, dwJobId);
  LogTrace(kRendering, "OEMStartDoc END%s (%d)", reset ? " (ResetDC)" : "", result);
  return ok ? result : FALSE;
}

BOOL APIENTRY OEMStartPage(SURFOBJ* pso) {
  const PDEVOBJ device = WritableDeviceOf(pso);
  if (device == nullptr) return FALSE;
  COemPDEV* state = DeviceState(device);
  LogTrace(kRendering, "OEMStartPage BEGIN (OemPDEV=%p)", static_cast<void*>(state));
  INT ok = ProcessPage(pso);
  ++state->dwPageCount;
  if (ok && state->dwPageCount >= 2) ok = Write([&] { SendPrintCommand(device); });
  LogTrace(kNoCategory, "OEMStartPage calling DrvStartPage...");
  const BOOL driverResult = CallDriver(state->pfnDrvStartPage, pso);
  const BOOL result = Both(ok, driverResult);
  LogTrace(kRendering, "OEMStartPage END (%d = %d && %d)", result, ok, driverResult);
  return result;
}

BOOL APIENTRY OEMSendPage(SURFOBJ* pso) {
  const PDEVOBJ device = DeviceOf(pso);
  if (device == nullptr) return FALSE;
  COemPDEV* state = DeviceState(device);
  LogTrace(kRendering, "OEMSendPage BEGIN (OemPDEV=%p)", static_cast<void*>(state));
  LogTrace(kNoCategory, "OEMSendPage calling DrvSendPage...");
  const BOOL result = CallDriver(state->pfnDrvSendPage, pso);
  LogTrace(kRendering, "OEMSendPage END (%d)", result);
  return result;
}

BOOL APIENTRY OEMStartBanding(SURFOBJ* pso, POINTL* pptl) {
  return PassBand("OEMStartBanding", "DrvStartBanding", &COemPDEV::pfnDrvStartBanding, pso, pptl);
}

BOOL APIENTRY OEMNextBand(SURFOBJ* pso, POINTL* pptl) {
  return PassBand("OEMNextBand", "DrvNextBand", &COemPDEV::pfnDrvNextBand, pso, pptl);
}

BOOL APIENTRY OEMEndDoc(SURFOBJ* pso, FLONG fl) {
  const PDEVOBJ device = WritableDeviceOf(pso);
  if (device == nullptr) return FALSE;
  COemPDEV* state = DeviceState(device);
  LogTrace(kRendering, "OEMEndDoc BEGIN (OemPDEV=%p)", static_cast<void*>(state));
  INT ok = 1;
  if (fl != ED_ABORTDOC) {
    ok = ProcessPage(pso);
    if (ok) ok = Write([&] { WriteJobEnd(device); });
  }
  state->dwPageCount = 0;
  state->bJobHeaderSent = FALSE;
  state->KeepBackground(nullptr);
  state->KeepHighlight(nullptr);
  state->ResetPage();
  LogTrace(kNoCategory, "OEMEndDoc calling DrvEndDoc...");
  const BOOL driverResult = CallDriver(state->pfnDrvEndDoc, pso, fl);
  const BOOL result = Both(ok, driverResult);
  LogTrace(kRendering, "OEMEndDoc END (%d = %d && %d)", result, ok, driverResult);
  return result;
}
